#include "splashwindow.h"

#include "version.h"

#include <QLabel>
#include <QSysInfo>
#include <QVBoxLayout>

SplashWindow::SplashWindow(QWidget *parent)
    : QWidget(parent, Qt::SplashScreen | Qt::FramelessWindowHint)
{
    setObjectName(QStringLiteral("splash"));
    setWindowTitle(QStringLiteral("Corvane"));
    setAttribute(Qt::WA_DeleteOnClose);
    setAutoFillBackground(true);

    auto *title = new QLabel(QStringLiteral("Corvane"), this);
    title->setObjectName(QStringLiteral("lblTitle"));
    QFont big = title->font();
    big.setPointSizeF(big.pointSizeF() * 2.4);
    big.setBold(true);
    title->setFont(big);
    auto *subtitle = new QLabel(QStringLiteral("Gestor de descargas"), this);
    auto *version = new QLabel(QStringLiteral("Versión ") + versionText(), this);
    version->setObjectName(QStringLiteral("lblVersion"));
    auto *system =
        new QLabel(QStringLiteral("Versión del sistema: ") + QSysInfo::kernelVersion(), this);
    system->setObjectName(QStringLiteral("lblPlatform"));

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(32, 24, 32, 24);
    layout->addWidget(title);
    layout->addWidget(subtitle);
    layout->addSpacing(16);
    layout->addWidget(version);
    layout->addWidget(system);

    m_timer.setObjectName(QStringLiteral("timer"));
    m_timer.setSingleShot(true);
    // Long enough to be drawn; it stays up while the main window is built.
    m_timer.setInterval(50);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        Q_EMIT done();
        close();
    });
    m_timer.start();
}
