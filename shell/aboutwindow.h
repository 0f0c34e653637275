#pragma once

#include <QDialog>

// The `about` window: the program's name, version and icon.
class AboutWindow final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(AboutWindow)

public:
    explicit AboutWindow(QWidget *parent = nullptr);
};
