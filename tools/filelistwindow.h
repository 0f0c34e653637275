#pragma once

#include "filelistimport.h"

#include <QDialog>

class QLineEdit;
class QListView;

// The file-list import window `oldsupport`: the base address, the names to download and not to
// download, the destination folder. The main window's menu entry `loadlist` calls loadlist().
class FileListWindow final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FileListWindow)

public:
    FileListWindow(ActiveList &active, InactiveList &inactive, const Settings &settings,
                   Desktop &desktop, QWidget *parent = nullptr);

    FileListImport &model() { return m_model; }
    // Asks for a list file; when one was chosen, shows it modally and returns once it is closed.
    void loadlist();

private:
    void refresh();

    FileListImport m_model;
    QLineEdit *m_url;
    QListView *m_si;
    QListView *m_no;
    QLineEdit *m_destdir;
};
