#pragma once

#include <QDialog>

class QLabel;
class QPlainTextEdit;

// The message window: a text, a picture and an OK button. Every message is a new window.
class MessageWindow final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MessageWindow)

public:
    MessageWindow(const QString &text, const QString &imagePath, QWidget *parent = nullptr);
};
