#pragma once

#include <QStringList>

class QListView;
class QPushButton;

class QStringListModel;
class QWidget;

// Pieces the link grabber and the file-list import windows share.

// A read-only list of texts, quick to lay out with tens of thousands of entries.
QListView *textList(QWidget *parent, const char *name);
QStringListModel *textsOf(const QListView *view);
// Shows `texts`; a list that only grew keeps its selection, one that lost an entry starts
// without.
void showTexts(QListView *view, const QStringList &texts);
// The selected row, -1 when none is.
int selectedRow(const QListView *view);

// A push button that Enter does not press; `toolTip` also names a button with a symbol for text.
QPushButton *toolButton(QWidget *parent, const char *name, const QString &text,
                        const QString &toolTip = {});
