#include "ftplogindialog.h"

#include <QCheckBox>
#include <QEvent>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

FtpLoginDialog::FtpLoginDialog(QWidget *parent)
    : QDialog(parent), m_username(new QLineEdit(QStringLiteral("anonymous"), this)),
      m_password(new QLineEdit(QStringLiteral("freepwd"), this)),
      m_remember(new QCheckBox(
          QStringLiteral("Recordar nombre de usuario y contraseña al reconectar"), this))
{
    setObjectName(QStringLiteral("ftplogin"));
    setWindowTitle(LoginCaption);
    m_username->setObjectName(QStringLiteral("username"));
    m_password->setObjectName(QStringLiteral("password"));
    m_password->setEchoMode(QLineEdit::Password);
    m_remember->setObjectName(QStringLiteral("remember"));
    auto *aceptar = new QPushButton(QStringLiteral("Aceptar"), this);
    aceptar->setObjectName(QStringLiteral("aceptar"));
    aceptar->setDefault(true);
    connect(aceptar, &QPushButton::clicked, this, &QDialog::accept);

    auto *form = new QFormLayout;
    auto *userLabel = new QLabel(QStringLiteral("&Usuario:"), this);
    userLabel->setBuddy(m_username);
    auto *passwordLabel = new QLabel(QStringLiteral("&Contraseña:"), this);
    passwordLabel->setBuddy(m_password);
    form->addRow(userLabel, m_username);
    form->addRow(passwordLabel, m_password);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_remember);
    layout->addWidget(aceptar, 0, Qt::AlignRight);

    m_username->installEventFilter(this);
    m_password->installEventFilter(this);
}

void FtpLoginDialog::setCredentials(const FtpCredentials &credentials)
{
    m_username->setText(credentials.usernm);
    m_password->setText(credentials.passw);
    m_remember->setChecked(credentials.rememb);
}

FtpCredentials FtpLoginDialog::credentials() const
{
    return FtpCredentials{m_username->text(), m_password->text(), m_remember->isChecked()};
}

bool FtpLoginDialog::eventFilter(QObject *watched, QEvent *event)
{
    // Focus selects the whole text, so typing replaces it; a click would clear a selection made
    // at once, hence after the event.
    if (event->type() == QEvent::FocusIn) {
        auto *edit = qobject_cast<QLineEdit *>(watched);
        if (edit)
            QTimer::singleShot(0, edit, &QLineEdit::selectAll);
    }
    return QDialog::eventFilter(watched, event);
}
