#include "clipboardwatch.h"

#include "failure.h"
#include "linkextraction.h"
#include "urls.h"

#include <QClipboard>
#include <algorithm>

ClipboardWatch::ClipboardWatch(QClipboard *clipboard, const ProgramFolder &folder,
                               std::function<bool()> watching, QObject *parent)
    : QObject(parent), m_clipboard(clipboard), m_folder(folder), m_watching(std::move(watching))
{
    connect(m_clipboard, &QClipboard::dataChanged, this, &ClipboardWatch::copied);
}

QString ClipboardWatch::downloadIn(const QString &text, const QStringList &endings)
{
    const QString url = text.trimmed();
    if (!url.startsWith(QLatin1String("http://")) && !url.startsWith(QLatin1String("https://")) &&
        !url.startsWith(QLatin1String("ftp://")))
        return {};
    // A blank or a line break inside: a sentence or several addresses, not one address.
    if (std::any_of(url.begin(), url.end(), [](QChar c) { return c.unicode() <= 0x20; }))
        return {};
    const QString name = FileNameOf(url);
    const bool wanted = std::any_of(endings.begin(), endings.end(), [&name](const QString &ending) {
        return !ending.isEmpty() && name.endsWith(ending, Qt::CaseInsensitive);
    });
    return wanted ? url : QString();
}

void ClipboardWatch::copied()
{
    if (!m_watching())
        return;
    QStringList endings;
    try {
        endings = wantedEndings(m_folder.file(EndingsFile));
    } catch (const Failure &) {
        // The link grabber says what is wrong with its file when it opens.
        endings = builtInEndings();
    }
    const QString url = downloadIn(m_clipboard->text(), endings);
    if (url.isEmpty() || m_offered.contains(url))
        return;
    m_offered.insert(url);
    Q_EMIT offered(url);
}
