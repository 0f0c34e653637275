#include "commandbar.h"

#include "icons.h"

#include <QAction>
#include <QToolBar>
#include <QToolButton>

QAction *makeCommand(QObject *parent, const char *name, const QString &text, const QString &toolTip,
                     const QString &icon)
{
    auto *command = new QAction(corvaneIcon(icon), text, parent);
    command->setObjectName(QLatin1String(name));
    command->setToolTip(toolTip);
    return command;
}

QToolBar *makeToolbar(QWidget *parent)
{
    auto *toolbar = new QToolBar(parent);
    toolbar->setObjectName(QStringLiteral("opciones"));
    toolbar->setToolButtonStyle(Qt::ToolButtonIconOnly);
    toolbar->setIconSize(QSize(22, 22));
    nameOverflowButton(toolbar);
    return toolbar;
}

void addButton(QToolBar *toolbar, QAction *command, const char *key)
{
    toolbar->addAction(command);
    QWidget *button = toolbar->widgetForAction(command);
    button->setObjectName(QLatin1String(key));
    button->setAccessibleName(command->toolTip());
}

void nameOverflowButton(QToolBar *toolbar)
{
    // The arrow that shows the buttons a narrow window leaves out has no tooltip of its own.
    if (auto *more = toolbar->findChild<QToolButton *>(QStringLiteral("qt_toolbar_ext_button")))
        more->setAccessibleName(QStringLiteral("Más botones"));
}
