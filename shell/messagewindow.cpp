#include "messagewindow.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

MessageWindow::MessageWindow(const QString &text, const QString &imagePath, QWidget *parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("msgform"));
    setWindowTitle(QStringLiteral("Corvane"));
    setAttribute(Qt::WA_DeleteOnClose);

    auto *imagen = new QLabel(this);
    imagen->setObjectName(QStringLiteral("imagen"));
    if (!imagePath.isEmpty())
        imagen->setPixmap(QPixmap(imagePath));
    auto *texto = new QPlainTextEdit(text, this);
    texto->setObjectName(QStringLiteral("texto"));
    texto->setReadOnly(true);
    auto *ok = new QPushButton(QStringLiteral("&Aceptar"), this);
    ok->setObjectName(QStringLiteral("ok"));
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);

    auto *top = new QHBoxLayout;
    top->addWidget(imagen, 0, Qt::AlignTop);
    top->addWidget(texto, 1);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(ok, 0, Qt::AlignRight);
    resize(380, 160);
}
