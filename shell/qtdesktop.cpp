#include "qtdesktop.h"

#include "folderwindow.h"
#include "ftplogindialog.h"
#include "messagewindow.h"
#include "systemcommands.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QSoundEffect>
#include <QStyle>
#include <QSystemTrayIcon>
#include <QUrl>

namespace {

QMessageBox::Icon boxIcon(Desktop::Icon icon)
{
    switch (icon) {
    case Desktop::Icon::Critical:
        return QMessageBox::Critical;
    case Desktop::Icon::Question:
        return QMessageBox::Question;
    case Desktop::Icon::Exclamation:
        return QMessageBox::Warning;
    case Desktop::Icon::Information:
        return QMessageBox::Information;
    }
    return QMessageBox::NoIcon;
}

} // namespace

QtDesktop::QtDesktop(const ProgramFolder &folder, QObject *parent)
    : QObject(parent), m_folder(folder)
{}

QtDesktop::~QtDesktop()
{
    unloadFolder();
}

void QtDesktop::messageBox(const QString &text, Icon icon, const QString &title)
{
    QMessageBox box(boxIcon(icon), title.isEmpty() ? QStringLiteral("Corvane") : title, text,
                    QMessageBox::Ok, m_mainWindow);
    box.exec();
}

bool QtDesktop::askYesNo(const QString &text)
{
    return QMessageBox::question(m_mainWindow, QStringLiteral("Corvane"), text,
                                 QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes;
}

std::optional<QString> QtDesktop::inputBox(const QString &prompt, const QString &initial,
                                           const QString &title)
{
    bool ok = false;
    const QString answer =
        QInputDialog::getText(m_mainWindow, title.isEmpty() ? QStringLiteral("Corvane") : title,
                              prompt, QLineEdit::Normal, initial, &ok);
    return ok ? std::optional<QString>(answer) : std::nullopt;
}

QString QtDesktop::openFileDialog(const QString &initial, const QString &filter)
{
    return QFileDialog::getOpenFileName(m_mainWindow, QString(), initial, filter);
}

QString QtDesktop::saveFileDialog(const QString &initial, const QString &filter)
{
    return QFileDialog::getSaveFileName(m_mainWindow, QString(), initial, filter);
}

QString QtDesktop::chooseFolder(const QString &initial)
{
    if (!m_folderWindow) {
        m_folderWindow = new FolderWindow(
            *this, [this] { return m_getunload && m_getunload(); }, m_mainWindow);
    }
    m_folderWindow->goTo(initial);
    // Only the program's end closes it otherwise; that counts as cancelled.
    return m_folderWindow->exec() == QDialog::Accepted ? m_folderWindow->path() : QString();
}

void QtDesktop::unloadFolder()
{
    delete m_folderWindow;
}

FtpCredentials QtDesktop::askFtpLogin(const QString &caption, const FtpCredentials &initial)
{
    FtpLoginDialog dialog(m_mainWindow);
    dialog.setWindowTitle(caption);
    dialog.setCredentials(initial);
    dialog.exec();
    return dialog.credentials();
}

void QtDesktop::playSound(const QString &path)
{
    auto *effect = new QSoundEffect(this);
    connect(effect, &QSoundEffect::playingChanged, effect, [effect] {
        if (!effect->isPlaying())
            effect->deleteLater();
    });
    effect->setSource(QUrl::fromLocalFile(path));
    effect->play();
}

void QtDesktop::showMessageWindow(const QString &text, const QString &imagePath)
{
    auto *window = new MessageWindow(text, imagePath, m_mainWindow);
    if (m_mainWindow && m_mainWindow->isVisible())
        window->exec();
    else
        window->show();
}

void QtDesktop::raiseTrayIndicator(const QString &text)
{
    if (!QSystemTrayIcon::isSystemTrayAvailable()) {
        MostrarMensaje(*this, m_folder, text);
        return;
    }
    m_pendingTrayText = text;
    if (!m_tray) {
        m_tray = new QSystemTrayIcon(
            QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning), this);
        m_tray->setObjectName(QStringLiteral("errmsg"));
        m_tray->setToolTip(QStringLiteral("Mensaje de Corvane"));
        connect(m_tray, &QSystemTrayIcon::activated, this, [this] {
            m_tray->hide();
            MostrarMensaje(*this, m_folder, m_pendingTrayText);
        });
    }
    m_tray->show();
}

void QtDesktop::openFile(const QString &path)
{
    QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

void QtDesktop::openUrl(const QString &url)
{
    QDesktopServices::openUrl(QUrl(url));
}

void QtDesktop::startProgram(const QString &commandLine)
{
    startCommandLine(commandLine);
}

void QtDesktop::powerOff()
{
    startPowerOff();
}
