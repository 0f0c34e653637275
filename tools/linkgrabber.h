#pragma once

#include "notifier.h"
#include "pagefetch.h"
#include "programfolder.h"

#include <QObject>
#include <QStringList>

class ActiveList;
class Desktop;
class InactiveList;
struct Settings;

// The logic of the link grabber `listado`: fetches one page, sorts the addresses of its links
// and/or images into `si` (wanted endings) and `no`, lets the person move them between the two
// and adds every `si` address to the downloads. The window shows these values and forwards the
// person's commands; `changed` says when something shown has changed.
class LinkGrabber final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LinkGrabber)

public:
    // The option buttons: links, images, or both.
    enum class Extract
    {
        linkonly,
        imgonly,
        linkimg
    };

    static inline const QString Caption = QStringLiteral("Obtener listado de archivos");

    LinkGrabber(ActiveList &active, InactiveList &inactive, const Settings &settings,
                Desktop &desktop, const ProgramFolder &folder, QObject *parent = nullptr);

    // Opening the window: everything afresh, the endings of "listado.lst" after the built-in
    // ones, and the clipboard's text as the address when it is one.
    void load(const QString &clipboard);
    // Closing the window: a fetch or an extraction under way stops.
    void unload();

    QString caption() const { return m_caption; }
    QString direcc() const { return m_direcc; }
    bool direccEnabled() const { return m_direccEnabled; }
    bool obtenerEnabled() const { return m_obtenerEnabled; }
    Extract extract() const { return m_extract; }
    const QStringList &si() const { return m_si; }
    const QStringList &no() const { return m_no; }
    const QStringList &ext() const { return m_ext; }
    QString destdir() const { return m_destdir; }
    // True while addresses are being added one by one.
    bool scanning() const { return m_scanning; }
    PageFetch &fetch() { return m_fetch; }

    // The person's commands. Rows are those of the lists as shown; -1 is no selection.
    void setDirecc(const QString &text);
    void setExtract(Extract extract);
    void setDestdir(const QString &folder);
    void obtener();
    void tosi(int row);
    void tono(int row);
    void adext();
    void delext(int row);
    void brdir();
    void addtolist();

    // The addresses of the page for the chosen option.
    void getlinks();
    // Adds every address that follows `pattern` to `si` or `no`, letting the program's events
    // run after each one, so a long page never freezes the program.
    void Add_Link(const QString &pattern, const QString &base);

Q_SIGNALS:
    void changed();

private:
    void fetchFinished();
    void fetchCutShort(const QString &reason);
    void fetchFailed(const QString &description);
    void showResults(bool mayRetry);
    void enableFetching();
    void saveEndings();

    ActiveList &m_active;
    InactiveList &m_inactive;
    const Settings &m_settings;
    Desktop &m_desktop;
    ProgramFolder m_folder;
    Notifier m_notifier;
    PageFetch m_fetch;

    QString m_caption = Caption;
    QString m_direcc;
    bool m_direccEnabled = true;
    bool m_obtenerEnabled = true;
    Extract m_extract = Extract::linkonly;
    QStringList m_si;
    QStringList m_no;
    QStringList m_ext;
    QString m_destdir;
    bool m_scanning = false;
    // Counts openings and closings: a scan started before one of them stops.
    quint64 m_session = 0;
};
