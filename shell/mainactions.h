#pragma once

#include <QHash>
#include <QObject>

class QAction;
class QMainWindow;
class QMenu;
class QToolBar;

// Every command of the main window, one QAction each, found by its name ("newurl", "detall",
// "viewactivas", "ultdescarga0"...): the menu bar, the toolbar `barra` and the tray menu show the
// same actions, so checks and enabled states never disagree.
class MainActions final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MainActions)

public:
    // Builds the menu bar and the toolbar of `window`.
    explicit MainActions(QMainWindow &window);

    QAction *operator[](const QString &name) const;
    QToolBar *barra() const { return m_barra; }
    QMenu *ultimas() const { return m_ultimas; }

private:
    QAction *make(const char *name, const QString &text);
    QMenu *menu(QMenu *parent, const char *name, const QString &title);
    void buildMenus(QMainWindow &window);
    void buildToolbar(QMainWindow &window);

    QHash<QString, QAction *> m_actions;
    QToolBar *m_barra = nullptr;
    QMenu *m_ultimas = nullptr;
};
