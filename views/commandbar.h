#pragma once

#include <QString>

class QAction;
class QObject;
class QToolBar;
class QWidget;

// One command of a list window: `text` is its caption in menus, `toolTip` what its toolbar
// button says, `icon` a name of corvaneIcon().
QAction *makeCommand(QObject *parent, const char *name, const QString &text, const QString &toolTip,
                     const QString &icon);
// The toolbar `opciones` of a list window: icon-only buttons.
QToolBar *makeToolbar(QWidget *parent);
// Adds the command as a button named `key`; its accessible name is its tooltip, so a screen
// reader says what the icon shows.
void addButton(QToolBar *toolbar, QAction *command, const char *key);
// Gives the arrow of a toolbar too narrow for its buttons a name a screen reader can say.
void nameOverflowButton(QToolBar *toolbar);
