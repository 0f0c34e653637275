#include "historylog.h"

#include "desktop.h"
#include "historytext.h"
#include "settings.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <algorithm>

namespace {

const QString CrLf = QStringLiteral("\r\n");

// Every kind of line break becomes CR LF, the one break the text box and the file know.
QString withCrLf(const QString &text)
{
    bool irregular = false;
    for (qsizetype i = 0; i < text.size() && !irregular; ++i) {
        const QChar c = text[i];
        irregular = (c == u'\r' && (i + 1 == text.size() || text[i + 1] != u'\n')) ||
                    (c == u'\n' && (i == 0 || text[i - 1] != u'\r')) || c == QChar::LineSeparator ||
                    c == QChar::ParagraphSeparator;
    }
    if (!irregular)
        return text;
    QString out;
    out.reserve(text.size() + 1);
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c == u'\r' || c == u'\n' || c == QChar::LineSeparator ||
            c == QChar::ParagraphSeparator) {
            if (c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
                ++i;
            out += CrLf;
        } else {
            out += c;
        }
    }
    return out;
}

} // namespace

HistoryLog::HistoryLog(const Settings &settings, Desktop &desktop, QObject *parent)
    : QObject(parent), m_settings(settings), m_desktop(desktop),
      m_headerLength(Rtf::header({}).size())
{}

void HistoryLog::open()
{
    if (m_state != State::Unopened)
        return;
    m_state = State::Open;
    load(m_settings.histrut);
    // No line break: the previous run's closing line ends with one.
    change(QStringLiteral("Iniciado a las ") + moment(), HistoryColour::Red);
}

bool HistoryLog::close()
{
    if (m_state != State::Open)
        return true;
    append(QStringLiteral("\r\nCerrado a las ") + moment() + QLatin1Char('\r'), HistoryColour::Red);
    m_state = State::Closed;
    const QString path = m_settings.histrut;
    if (!m_unsavedPath.isEmpty() && path == m_unsavedPath)
        return false;
    return saveTo(path);
}

void HistoryLog::append(const QString &text, quint32 colour)
{
    if (m_state == State::Closed)
        return;
    open();
    // The line break is typed before the colour is chosen, so it takes the colour before it.
    QString rest = text;
    if (rest.startsWith(CrLf)) {
        change(CrLf, m_pieces.empty() ? HistoryColour::Black : m_pieces.back().colour);
        rest.remove(0, 2);
    }
    change(rest, colour);
}

bool HistoryLog::savehist()
{
    const QString path = m_desktop.saveFileDialog(QString(), QStringLiteral("*.rtf"));
    return !path.isEmpty() && saveTo(path);
}

bool HistoryLog::saveTo(const QString &path)
{
    const QByteArray bytes = Rtf::write(document());
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    m_desktop.messageBox(QStringLiteral("No se ha podido guardar el historial en ") + path +
                             QStringLiteral(": ") + file.errorString(),
                         Desktop::Icon::Critical);
    return false;
}

void HistoryLog::clear()
{
    removeAll();
    Q_EMIT reset();
    limitSize();
}

QString HistoryLog::text() const
{
    QString out;
    out.reserve(m_end - m_origin);
    for (const Piece &piece : m_pieces)
        out += piece.text;
    return out;
}

RtfDocument HistoryLog::document() const
{
    RtfDocument document{m_colours, {}};
    document.runs.reserve(qsizetype(m_pieces.size()));
    for (const Piece &piece : m_pieces)
        document.runs.append(RtfRun{piece.text, piece.colour});
    return document;
}

void HistoryLog::load(const QString &path)
{
    removeAll();
    const QFileInfo info(path);
    if (!path.isEmpty() && info.isFile() && info.size() > 0) {
        QFile file(path);
        std::optional<RtfDocument> document;
        if (file.open(QIODevice::ReadOnly))
            document = Rtf::read(file.readAll());
        if (document) {
            // The file's own colour table, so that writing it back changes nothing.
            for (const quint32 colour : std::as_const(document->colours))
                colourWordLength(colour);
            for (const RtfRun &run : std::as_const(document->runs))
                insertAtEnd(withCrLf(run.text), run.colour);
        } else {
            setAside(path);
        }
    }
    limitSize();
    Q_EMIT reset();
}

// A file that is not a history log is kept under another name rather than overwritten.
void HistoryLog::setAside(const QString &path)
{
    QString aside = path + QStringLiteral(".bak");
    for (int n = 1; QFileInfo::exists(aside); ++n)
        aside = path + QLatin1Char('.') + QString::number(n) + QStringLiteral(".bak");
    if (QFile::rename(path, aside)) {
        m_desktop.messageBox(QStringLiteral("El archivo de historial ") + path +
                                 QStringLiteral(" no es un documento RTF. Se ha guardado como ") +
                                 aside + QStringLiteral(" y el historial empieza vacío."),
                             Desktop::Icon::Exclamation);
    } else {
        m_unsavedPath = path;
        m_desktop.messageBox(
            QStringLiteral("El archivo de historial ") + path +
                QStringLiteral(" no es un documento RTF y no se puede apartar: el historial de "
                               "esta sesión no se guardará en él."),
            Desktop::Icon::Exclamation);
    }
}

// One change of the text: the text box would run the size limit after it.
void HistoryLog::change(const QString &text, quint32 colour)
{
    const QString normal = withCrLf(text);
    if (normal.isEmpty())
        return;
    insertAtEnd(normal, colour);
    Q_EMIT appended(normal, colour);
    limitSize();
}

void HistoryLog::insertAtEnd(QStringView text, quint32 colour)
{
    for (qsizetype from = 0; from < text.size();) {
        const qsizetype lineBreak = text.indexOf(CrLf, from);
        const qsizetype to = lineBreak < 0 ? text.size() : lineBreak + 2;
        const QStringView part = text.sliced(from, to - from);
        const qint64 length = Rtf::textLength(part);
        if (!m_pieces.empty() && m_pieces.back().colour == colour &&
            !m_pieces.back().text.endsWith(CrLf)) {
            m_pieces.back().text += part;
            m_pieces.back().length += length;
            m_bodyLength += length;
        } else {
            const bool sameColour = !m_pieces.empty() && m_pieces.back().colour == colour;
            const qint64 word = sameColour ? 0 : colourWordLength(colour);
            m_pieces.push_back(Piece{part.toString(), colour, m_end, length + word});
            m_bodyLength += length + word;
        }
        m_end += part.size();
        from = to;
    }
}

// Enters `colour` in the colour table when it is new.
qint64 HistoryLog::colourWordLength(quint32 colour)
{
    qsizetype index = m_colours.indexOf(colour);
    if (index < 0) {
        index = m_colours.size();
        m_colours.append(colour);
        m_headerLength = Rtf::header(m_colours).size();
    }
    return Rtf::colourWord(index).size();
}

QString HistoryLog::moment() const
{
    const QDateTime now = m_clock();
    return timeText(now) + QStringLiteral(" el ") + FormatoSpain(dateText(now));
}
