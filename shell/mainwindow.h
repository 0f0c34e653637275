#pragma once

#include "mditiling.h"
#include "statuspanel.h"
#include "viewswitches.h"

#include <QMainWindow>
#include <QSet>
#include <array>

class MainActions;
class QComboBox;
class QLabel;
class QMdiArea;
class QMdiSubWindow;
class QPushButton;
class QToolBar;

// The main window `main`: the child windows in an MDI area, the menus and toolbar, the quick-add
// bar and the status bar. It shows what it is given and forwards commands; closing it asks the
// program to shut down.
class MainWindow final : public QMainWindow
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MainWindow)

public:
    explicit MainWindow(QWidget *parent = nullptr);

    MainActions &actions() { return *m_actions; }
    QComboBox *quickadd() const { return m_quickadd; }
    QPushButton *addquick() const { return m_addquick; }
    QMdiArea *mdi() const { return m_mdi; }

    // Puts `window` into the MDI area, hidden; its view switch shows and hides it, and closing
    // it unchecks the switch.
    void addChild(ViewSwitches::Switch which, QWidget *window);
    QMdiSubWindow *child(ViewSwitches::Switch which) const { return m_children[which]; }
    // Shows a child window in front of the others and checks its switch.
    void bringForward(ViewSwitches::Switch which);

    ViewSwitches viewSwitches() const;
    void applyViewSwitches(const ViewSwitches &switches);
    // Child windows one above the other (`horizontal`) or side by side, as far as the area's
    // width allows.
    void tile(Qt::Orientation orientation);
    // A few windows one above the other; more of them in two rows, the lists in the first.
    void arrange();

    void setPanelText(StatusPanel panel, const QString &text);

    // True once shutdown has begun (`getunload`).
    bool getunload() const { return m_closing; }
    void setClosing() { m_closing = true; }

Q_SIGNALS:
    void quickAddRequested(const QString &text);
    void closeRequested();

protected:
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QAction *switchAction(ViewSwitches::Switch which) const;
    // Those of the `which` child windows that are shown and not minimised, in that order.
    QList<Tile> shown(std::initializer_list<ViewSwitches::Switch> which) const;
    void place(const QList<QList<Tile>> &rows);
    void showSwitched(ViewSwitches::Switch which, bool on);
    void buildQuickBar();
    void buildStatusBar();

    MainActions *m_actions;
    QMdiArea *m_mdi;
    QToolBar *m_quickbar = nullptr;
    QComboBox *m_quickadd = nullptr;
    QPushButton *m_addquick = nullptr;
    std::array<QLabel *, 3> m_panels{};
    std::array<QMdiSubWindow *, ViewSwitches::Count> m_children{};
    QSet<QMdiSubWindow *> m_placed;
    bool m_closing = false;
};
