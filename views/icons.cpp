#include "icons.h"

#include <QLatin1StringView>

namespace {

struct IconSource
{
    QLatin1StringView name;
    // Names in the freedesktop icon naming scheme; the first one the theme has wins.
    QLatin1StringView themeNames[2];
};

// Each name also has a drawing of its own, :/icons/NAME.svg.
const IconSource Sources[] = {
    {QLatin1StringView("detener"), {QLatin1StringView("process-stop")}},
    {QLatin1StringView("pausar"), {QLatin1StringView("media-playback-pause")}},
    {QLatin1StringView("reconectar"), {QLatin1StringView("view-refresh")}},
    {QLatin1StringView("continuar"), {QLatin1StringView("media-playback-start")}},
    {QLatin1StringView("delend"),
     {QLatin1StringView("edit-clear-all"), QLatin1StringView("edit-clear")}},
    {QLatin1StringView("open"),
     {QLatin1StringView("system-run"), QLatin1StringView("document-open")}},
    {QLatin1StringView("antivirus"), {QLatin1StringView("security-high")}},
    {QLatin1StringView("apagar"), {QLatin1StringView("system-shutdown")}},
    {QLatin1StringView("bloquear"),
     {QLatin1StringView("object-locked"), QLatin1StringView("changes-prevent")}},
    {QLatin1StringView("propiedades"), {QLatin1StringView("document-properties")}},
    // The main window's toolbar.
    {QLatin1StringView("explorer"),
     {QLatin1StringView("web-browser"), QLatin1StringView("applications-internet")}},
    {QLatin1StringView("cfg"),
     {QLatin1StringView("preferences-system"), QLatin1StringView("configure")}},
    {QLatin1StringView("inactivas"), {QLatin1StringView("media-playback-pause")}},
    {QLatin1StringView("activas"), {QLatin1StringView("download"), QLatin1StringView("go-down")}},
    {QLatin1StringView("listado"), {QLatin1StringView("edit-find")}},
    {QLatin1StringView("addurl"), {QLatin1StringView("list-add")}},
    {QLatin1StringView("log"), {QLatin1StringView("document-open-recent")}},
    {QLatin1StringView("estadisticas"),
     {QLatin1StringView("utilities-system-monitor"), QLatin1StringView("office-chart-line")}},
    {QLatin1StringView("systray"), {QLatin1StringView("go-bottom")}},
};

} // namespace

QIcon corvaneIcon(const QString &name)
{
    for (const IconSource &source : Sources) {
        if (source.name != name)
            continue;
        for (QLatin1StringView themeName : source.themeNames) {
            if (!themeName.isEmpty() && QIcon::hasThemeIcon(themeName))
                return QIcon::fromTheme(themeName);
        }
        return QIcon(QStringLiteral(":/icons/") + name + QStringLiteral(".svg"));
    }
    return {};
}
