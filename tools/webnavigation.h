#pragma once

#include <QString>
#include <functional>
#include <optional>

class Desktop;
class Notifier;

// What the browser window decides on its own, apart from the web engine: which navigations go
// on, and whether the page may show its own dialog boxes. Pages are silent (no boxes) except
// after a "mailto:" link, until the next navigation.
class WebNavigation
{
public:
    // The main window's `añadir`: adds one download by its address; false when it was refused.
    using AddDownload = std::function<bool(const QString &url)>;

    WebNavigation(AddDownload añadir, Notifier &notifier, Desktop &desktop);

    // Runs before each navigation; false cancels it. The prefixes are compared in exact case.
    bool beforeNavigate(const QString &url);
    // Adds `address` to the downloads and says so, as a "zelq:" link does.
    void addDownload(const QString &address);

    bool silent() const { return m_silent; }
    void setSilent(bool silent) { m_silent = silent; }

    // The page's own boxes: refused without asking while silent.
    void alert(const QString &text);
    bool confirm(const QString &text);
    std::optional<QString> prompt(const QString &text, const QString &initial);
    // A page whose certificate is not valid: opened only when the person says so.
    bool acceptCertificate(const QString &host, const QString &problem);

private:
    AddDownload m_añadir;
    Notifier &m_notifier;
    Desktop &m_desktop;
    bool m_silent = true;
};
