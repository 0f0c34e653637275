#include "mainactions.h"

#include "commandbar.h"
#include "icons.h"
#include "recentdownloads.h"

#include <QMainWindow>
#include <QMenuBar>
#include <QToolBar>
#include <QToolButton>

namespace {

// The toolbar's buttons: key (also the icon's name), tooltip, the menu action it runs (empty: one
// of its own).
struct ToolbarButton
{
    const char *key;
    const char *toolTip;
    const char *action;
};

const ToolbarButton Buttons[] = {
    {"explorer", "Página principal", ""},
    {"cfg", "Configuración", "opciones"},
    {"inactivas", "Lista de descargas inactivas", ""},
    {"activas", "Lista de descargas activas", ""},
    {"listado", "Obtener links y archivos de un documento HTML", ""},
    {"addurl", "Añadir URL", "newurl"},
    {"log", "Historial", ""},
    {"estadisticas", "Estadísticas", ""},
    {"systray", "Ocultar en la barra del sistema", "hidesys"},
};

} // namespace

MainActions::MainActions(QMainWindow &window) : QObject(&window)
{
    buildMenus(window);
    buildToolbar(window);
}

QAction *MainActions::operator[](const QString &name) const
{
    QAction *action = m_actions.value(name);
    Q_ASSERT_X(action, "MainActions", qPrintable(name));
    return action;
}

QAction *MainActions::make(const char *name, const QString &text)
{
    auto *action = new QAction(text, this);
    action->setObjectName(QLatin1String(name));
    m_actions.insert(QLatin1String(name), action);
    return action;
}

QMenu *MainActions::menu(QMenu *parent, const char *name, const QString &title)
{
    auto *result = parent->addMenu(title);
    result->setObjectName(QLatin1String(name));
    return result;
}

void MainActions::buildMenus(QMainWindow &window)
{
    QMenuBar *bar = window.menuBar();
    const auto topMenu = [bar](const char *name, const QString &title) {
        QMenu *result = bar->addMenu(title);
        result->setObjectName(QLatin1String(name));
        return result;
    };

    QMenu *archivo = topMenu("archivo", QStringLiteral("&Archivo"));
    archivo->addAction(make("newurl", QStringLiteral("Añadir &nueva URL")));
    archivo->addAction(make("loadlist", QStringLiteral("Cargar &lista de archivo")));
    archivo->addSeparator()->setObjectName(QStringLiteral("sepa4"));
    QMenu *detener = menu(archivo, "detener", QStringLiteral("&Detener"));
    detener->addAction(make("detall", QStringLiteral("&Todas")));
    detener->addAction(make("detact", QStringLiteral("&Activas")));
    detener->addAction(make("detinactivas", QStringLiteral("&Inactivas")));
    archivo->addAction(make("pauseall", QStringLiteral("&Pausar todas")));
    archivo->addAction(make("contall", QStringLiteral("&Continuar todas")));
    archivo->addSeparator()->setObjectName(QStringLiteral("sep1"));
    m_ultimas = menu(archivo, "ultimas", QStringLiteral("Últi&mas descargas"));
    for (int i = 0; i < RecentDownloads::Size; ++i) {
        const QByteArray name = "ultdescarga" + QByteArray::number(i);
        m_ultimas->addAction(make(name.constData(), QString()));
    }
    archivo->addSeparator()->setObjectName(QStringLiteral("sep2"));
    archivo->addAction(make("salir", QStringLiteral("&Salir")));

    QMenu *ver = topMenu("ver", QStringLiteral("&Ver"));
    const std::pair<const char *, QString> views[] = {
        {"general", QStringLiteral("Barra de &herramientas")},
        {"viequickadd", QStringLiteral("Barra de &añadido rápido")},
        {"viewweb", QStringLiteral("Ventana &web")},
        {"viewactivas", QStringLiteral("Ventana de descargas &activas")},
        {"viewinactivas", QStringLiteral("Ventana de descargas &inactivas")},
        {"viewhist", QStringLiteral("&Historial")},
        {"viewestadisticas", QStringLiteral("&Estadísticas")},
    };
    for (const auto &[name, text] : views) {
        QAction *view = make(name, text);
        view->setCheckable(true);
        ver->addAction(view);
    }
    ver->addAction(make("hidesys", QStringLiteral("&Ocultar en barra del sistema")));

    QMenu *herramientas = topMenu("herramientas", QStringLiteral("&Herramientas"));
    herramientas->addAction(make("opciones", QStringLiteral("&Opciones")));
    QAction *limit = make("limitar", QStringLiteral("&Limitar velocidad"));
    limit->setCheckable(true);
    herramientas->addAction(limit);
    herramientas->addAction(make("savehist", QStringLiteral("&Guardar historial")));
    herramientas->addAction(make("delhist", QStringLiteral("&Borrar historial")));

    QMenu *ventana = topMenu("ventana", QStringLiteral("Ven&tana"));
    ventana->addAction(make("cascada", QStringLiteral("&Cascada")));
    ventana->addAction(make("mhorz", QStringLiteral("Mosaico &horizontal")));
    ventana->addAction(make("mvert", QStringLiteral("Mosaico &vertical")));

    QMenu *ayuda = topMenu("ayuda", QStringLiteral("A&yuda"));
    ayuda->addAction(make("ayudab", QStringLiteral("&Ayuda")));
    ayuda->addAction(make("acercade", QStringLiteral("A&cerca de")));
}

void MainActions::buildToolbar(QMainWindow &window)
{
    m_barra = window.addToolBar(QStringLiteral("Barra de herramientas"));
    m_barra->setObjectName(QStringLiteral("barra"));
    m_barra->setMovable(false);
    nameOverflowButton(m_barra);
    for (const ToolbarButton &button : Buttons) {
        const QString toolTip = QString::fromUtf8(button.toolTip);
        QAction *action = *button.action ? m_actions.value(QLatin1String(button.action))
                                         : make(button.key, toolTip);
        action->setToolTip(toolTip);
        action->setIcon(corvaneIcon(QLatin1String(button.key)));
        m_barra->addAction(action);
        QWidget *widget = m_barra->widgetForAction(action);
        widget->setObjectName(QLatin1String(button.key));
        widget->setAccessibleName(toolTip);
    }
}
