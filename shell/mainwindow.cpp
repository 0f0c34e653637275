#include "mainwindow.h"

#include "mainactions.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QScreen>
#include <QStatusBar>
#include <QToolBar>

namespace {

const char *const SwitchNames[ViewSwitches::Count] = {
    "viewweb",          "viewhist", "viewactivas", "viewinactivas",
    "viewestadisticas", "general",  "viequickadd"};

} // namespace

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent), m_actions(new MainActions(*this)), m_mdi(new QMdiArea(this))
{
    setObjectName(QStringLiteral("main"));
    setWindowTitle(QStringLiteral("Corvane"));
    // The bars are shown and hidden from the Ver menu only, so that its checks stay true.
    setContextMenuPolicy(Qt::NoContextMenu);
    m_mdi->setObjectName(QStringLiteral("mdi"));
    m_mdi->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m_mdi->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setCentralWidget(m_mdi);
    buildQuickBar();
    buildStatusBar();

    for (int i = 0; i < ViewSwitches::Count; ++i) {
        const auto which = ViewSwitches::Switch(i);
        connect(switchAction(which), &QAction::toggled, this,
                [this, which](bool on) { showSwitched(which, on); });
    }
    // Room for both lists, but never more than the screen has.
    resize(QSize(980, 660).boundedTo(screen()->availableSize() * 0.92));
}

void MainWindow::buildQuickBar()
{
    addToolBarBreak();
    m_quickbar = addToolBar(QStringLiteral("Barra de añadido rápido"));
    m_quickbar->setObjectName(QStringLiteral("quickbar"));
    m_quickbar->setMovable(false);
    auto *label = new QLabel(QStringLiteral("  Añadir descarga:"), m_quickbar);
    label->setObjectName(QStringLiteral("Label1"));
    m_quickadd = new QComboBox(m_quickbar);
    m_quickadd->setObjectName(QStringLiteral("quickadd"));
    m_quickadd->setEditable(true);
    // The list holds the addresses added before, as the program records them; Enter adds.
    m_quickadd->setInsertPolicy(QComboBox::NoInsert);
    m_quickadd->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_quickadd->setMinimumContentsLength(20);
    m_quickadd->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_quickadd->lineEdit()->setPlaceholderText(QStringLiteral("http://, https:// o ftp://"));
    label->setBuddy(m_quickadd);
    m_addquick = new QPushButton(QStringLiteral("Añadir"), m_quickbar);
    m_addquick->setObjectName(QStringLiteral("addquick"));
    m_quickbar->addWidget(label);
    m_quickbar->addWidget(m_quickadd);
    m_quickbar->addWidget(m_addquick);

    connect(m_addquick, &QPushButton::clicked, this,
            [this] { Q_EMIT quickAddRequested(m_quickadd->currentText()); });
    // Enter is taken before the box sees it: the line edit would pass it back to the box, which
    // hands it to the line edit again, and the address would be added twice. On a real display
    // the key reaches the box, which has the focus and calls its line edit directly, past any
    // filter of the line edit's own; a key sent to the line edit itself is taken there.
    m_quickadd->installEventFilter(this);
    m_quickadd->lineEdit()->installEventFilter(this);
}

void MainWindow::buildStatusBar()
{
    QStatusBar *estado = statusBar();
    estado->setObjectName(QStringLiteral("estado"));
    const std::tuple<const char *, QString, QString> panels[] = {
        {"descargas", QStringLiteral("0/0"),
         QStringLiteral("Número de descargas activas/Descargas totales")},
        {"velmedia", QStringLiteral("0 Kb/s"), QStringLiteral("Velocidad media")},
        {"mensajes", QString(), QStringLiteral("Mensajes")},
    };
    for (int i = 0; i < 3; ++i) {
        const auto &[name, text, toolTip] = panels[i];
        auto *panel = new QLabel(text, estado);
        panel->setObjectName(QLatin1String(name));
        // A screen reader reads the panel's text as its name, and the tooltip after it.
        panel->setToolTip(toolTip);
        panel->setAccessibleDescription(toolTip);
        m_panels[i] = panel;
    }
    // The count and the speeds take the width of their longest readings; the messages the rest,
    // cut at its edge rather than widening the window.
    const auto fit = [](QLabel *panel, const QString &longest) {
        panel->setMinimumWidth(panel->fontMetrics().horizontalAdvance(longest));
    };
    fit(m_panels[0], QStringLiteral("40/80  "));
    fit(m_panels[1], QStringLiteral("Vel. Total: 99999Kb/seg||Vel. Media: 9999.99 Kb/seg  "));
    m_panels[2]->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_panels[2]->setMinimumWidth(60);
    estado->addWidget(m_panels[0], 0);
    estado->addWidget(m_panels[1], 0);
    estado->addWidget(m_panels[2], 1);
}

void MainWindow::setPanelText(StatusPanel panel, const QString &text)
{
    m_panels[int(panel)]->setText(text);
}

QAction *MainWindow::switchAction(ViewSwitches::Switch which) const
{
    return (*m_actions)[QLatin1String(SwitchNames[which])];
}

void MainWindow::addChild(ViewSwitches::Switch which, QWidget *window)
{
    QMdiSubWindow *sub = m_mdi->addSubWindow(window);
    sub->setAttribute(Qt::WA_DeleteOnClose, false);
    sub->setObjectName(window->objectName() + QStringLiteral("Frame"));
    sub->setWindowIcon(window->windowIcon());
    sub->hide();
    sub->installEventFilter(this);
    m_children[which] = sub;
}

void MainWindow::showSwitched(ViewSwitches::Switch which, bool on)
{
    if (which == ViewSwitches::general)
        m_actions->barra()->setVisible(on);
    else if (which == ViewSwitches::viequickadd)
        m_quickbar->setVisible(on);
    else if (on)
        bringForward(which);
    else if (m_children[which])
        m_children[which]->hide();
}

void MainWindow::bringForward(ViewSwitches::Switch which)
{
    QMdiSubWindow *sub = m_children[which];
    if (!sub)
        return;
    // A window shown for the first time, not by arranging them all, comes at the size it asks.
    if (!m_placed.contains(sub)) {
        m_placed.insert(sub);
        sub->resize(sub->sizeHint().boundedTo(m_mdi->viewport()->size()));
    }
    sub->show();
    sub->widget()->show();
    m_mdi->setActiveSubWindow(sub);
    const QSignalBlocker blocker(switchAction(which));
    switchAction(which)->setChecked(true);
}

bool MainWindow::eventFilter(QObject *watched, QEvent *event)
{
    if ((watched == m_quickadd || watched == m_quickadd->lineEdit()) &&
        event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            Q_EMIT quickAddRequested(m_quickadd->currentText());
            return true;
        }
    }
    // A child window closed by its own close box: hidden, and its switch follows.
    if (event->type() == QEvent::Close && !m_closing) {
        for (int i = 0; i < ViewSwitches::Count; ++i) {
            if (m_children[i] == watched) {
                event->accept();
                m_children[i]->hide();
                switchAction(ViewSwitches::Switch(i))->setChecked(false);
                return true;
            }
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

ViewSwitches MainWindow::viewSwitches() const
{
    ViewSwitches switches;
    for (int i = 0; i < ViewSwitches::Count; ++i)
        switches.set(ViewSwitches::Switch(i), switchAction(ViewSwitches::Switch(i))->isChecked());
    return switches;
}

void MainWindow::applyViewSwitches(const ViewSwitches &switches)
{
    for (int i = 0; i < ViewSwitches::Count; ++i) {
        const auto which = ViewSwitches::Switch(i);
        const QSignalBlocker blocker(switchAction(which));
        switchAction(which)->setChecked(switches.on(which));
        showSwitched(which, switches.on(which));
    }
}

QList<Tile> MainWindow::shown(std::initializer_list<ViewSwitches::Switch> which) const
{
    QList<Tile> tiles;
    for (const ViewSwitches::Switch i : which) {
        QMdiSubWindow *sub = m_children[i];
        // The lists keep their room; the others give some up when there is not enough.
        if (sub && !sub->isHidden() && !sub->isMinimized())
            tiles.append({sub, i != ViewSwitches::viewactivas && i != ViewSwitches::viewinactivas});
    }
    return tiles;
}

void MainWindow::arrange()
{
    const QList<Tile> lists = shown({ViewSwitches::viewactivas, ViewSwitches::viewinactivas});
    const QList<Tile> others =
        shown({ViewSwitches::viewweb, ViewSwitches::viewhist, ViewSwitches::viewestadisticas});
    if (lists.size() + others.size() <= 3) {
        tile(Qt::Horizontal);
        return;
    }
    // Many windows: the lists side by side, the others side by side under them.
    place({lists, others});
}

void MainWindow::tile(Qt::Orientation orientation)
{
    const QList<Tile> tiles =
        shown({ViewSwitches::viewweb, ViewSwitches::viewinactivas, ViewSwitches::viewactivas,
               ViewSwitches::viewhist, ViewSwitches::viewestadisticas});
    if (orientation == Qt::Vertical) {
        place({tiles});
        return;
    }
    QList<QList<Tile>> rows;
    for (const Tile &tile : tiles)
        rows.append({tile});
    place(rows);
}

void MainWindow::place(const QList<QList<Tile>> &rows)
{
    for (const QList<Tile> &row : rows) {
        for (const Tile &tile : row)
            m_placed.insert(tile.window);
    }
    placeInRows(*m_mdi, rows);
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    // The program saves everything and then ends; the window itself stays until then.
    event->ignore();
    if (!m_closing)
        Q_EMIT closeRequested();
}
