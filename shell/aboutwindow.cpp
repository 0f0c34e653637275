#include "aboutwindow.h"

#include "version.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

AboutWindow::AboutWindow(QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("about"));
    setWindowTitle(QStringLiteral("Acerca de"));

    auto *picIcon = new QLabel(this);
    picIcon->setObjectName(QStringLiteral("picIcon"));
    picIcon->setPixmap(QApplication::windowIcon().pixmap(64, 64));
    auto *lblTitle = new QLabel(QStringLiteral("Corvane"), this);
    lblTitle->setObjectName(QStringLiteral("lblTitle"));
    QFont big = lblTitle->font();
    big.setPointSizeF(big.pointSizeF() * 1.8);
    big.setBold(true);
    lblTitle->setFont(big);
    auto *version = new QLabel(versionText(), this);
    version->setObjectName(QStringLiteral("version"));
    auto *description = new QLabel(
        QStringLiteral("Gestor de descargas HTTP, HTTPS y FTP con reanudación y reintentos."),
        this);
    description->setWordWrap(true);
    auto *cmdOK = new QPushButton(QStringLiteral("Aceptar"), this);
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    cmdOK->setDefault(true);
    connect(cmdOK, &QPushButton::clicked, this, &QDialog::accept);

    auto *texts = new QVBoxLayout;
    texts->addWidget(lblTitle);
    texts->addWidget(version);
    texts->addWidget(description);
    auto *top = new QHBoxLayout;
    top->addWidget(picIcon, 0, Qt::AlignTop);
    top->addSpacing(12);
    top->addLayout(texts, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdOK);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addStretch();
    layout->addLayout(buttons);
    resize(420, 180);
}
