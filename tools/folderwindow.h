#pragma once

#include "folderchooser.h"

#include <QDialog>

class QComboBox;
class QFileSystemModel;
class QLabel;
class QModelIndex;
class QTreeView;

// The folder chooser `folder`: a drive list, the folder tree of the chosen drive, a button that
// makes a new folder and one that confirms. The caller shows it modally and reads path() once it
// is hidden. It is made once and reused: the close box is refused until the program is ending.
class FolderWindow final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FolderWindow)

public:
    FolderWindow(Desktop &desktop, std::function<bool()> getunload, QWidget *parent = nullptr);

    QString path() const { return m_chooser.path(); }
    // Shows `folder` on its drive when it is a folder; otherwise the last choice stays.
    void goTo(const QString &folder);

    // The close box and Escape.
    void reject() override;

private:
    void fillDrives();
    void driveChosen(int index);
    void folderChosen(const QModelIndex &index);
    void folderLoaded(const QString &folder);
    void folderSorted();
    void makeFolder();
    void showChoice();

    FolderChooser m_chooser;
    QComboBox *m_drive;
    QFileSystemModel *m_model;
    QTreeView *m_dir;
    QLabel *m_ruta;
    QString m_scrollWhenLoaded;
    bool m_scrollAfterSort = false;
};
