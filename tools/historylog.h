#pragma once

#include "historysink.h"
#include "rtfcodec.h"

#include <QDateTime>
#include <QObject>
#include <deque>
#include <functional>

class Desktop;
struct Settings;

// The history log: coloured lines kept between runs in the RTF file at `histrut` and held
// under `histsize` Kbytes of RTF. Opening loads the file and writes the start line; closing
// writes the closing line and the file. The window `historial` only shows it.
class HistoryLog final : public QObject, public HistorySink
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HistoryLog)

public:
    using Clock = std::function<QDateTime()>;

    HistoryLog(const Settings &settings, Desktop &desktop, QObject *parent = nullptr);

    // For tests: the moment the start and closing lines carry.
    void setClock(Clock clock) { m_clock = std::move(clock); }

    // Loads the file at `histrut` and writes the start line; does nothing the second time.
    void open();
    // Writes the closing line and the file at `histrut`; false when the file could not be
    // written (the person has been told why). Lines appended afterwards are dropped.
    bool close();

    // A history line: an optional leading CR LF (in the colour of the text before it), then
    // `text` in `colour`. The first line opens the log.
    void append(const QString &text, quint32 colour) override;

    // savehist: asks for a file ("*.rtf") and writes the log there.
    bool savehist();
    // Writes the log to `path`, replacing it; on failure tells the person why.
    bool saveTo(const QString &path);
    // delhist: empties the log.
    void clear();

    QString text() const;
    RtfDocument document() const;
    // The length of the RTF that saving would write, kept up to date as the text changes.
    qint64 rtfLength() const { return m_headerLength + m_bodyLength + Rtf::Trailer.size(); }

Q_SIGNALS:
    // The whole text changed (loaded, cleared): show document() afresh.
    void reset();
    // `text` (line breaks as CR LF) went onto the end in `colour`.
    void appended(const QString &text, quint32 colour);
    // The first `count` lines went, each with its CR LF.
    void linesRemoved(int count);

private:
    enum class State
    {
        Unopened,
        Open,
        Closed
    };

    // A stretch of one colour that holds a CR LF only at its end; its RTF length includes
    // the colour word when the stretch before it has another colour.
    struct Piece
    {
        QString text;
        quint32 colour;
        qint64 start; // offset from the first character ever held, so it survives trimming
        qint64 length;
    };

    void load(const QString &path);
    void setAside(const QString &path);
    void change(const QString &text, quint32 colour);
    void insertAtEnd(QStringView text, quint32 colour);
    qint64 colourWordLength(quint32 colour);
    void limitSize();
    qsizetype findLineBreak(qint64 position, size_t &piece) const;
    void removeThrough(size_t piece);
    void removeAll();
    QString moment() const;

    const Settings &m_settings;
    Desktop &m_desktop;
    Clock m_clock = [] { return QDateTime::currentDateTime(); };
    State m_state = State::Unopened;
    QString m_unsavedPath; // a file we could not read nor move aside: never overwritten
    bool m_limitErrorShown = false;

    std::deque<Piece> m_pieces;
    QList<quint32> m_colours;
    qint64 m_origin = 0;
    qint64 m_end = 0;
    qint64 m_headerLength = 0;
    qint64 m_bodyLength = 0;
};
