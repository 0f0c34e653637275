#include "toolwidgets.h"

#include <QListView>
#include <QPushButton>
#include <QStringListModel>

QListView *textList(QWidget *parent, const char *name)
{
    auto *view = new QListView(parent);
    view->setObjectName(QLatin1String(name));
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setUniformItemSizes(true);
    // Long addresses share their beginning: what tells them apart is at the end.
    view->setTextElideMode(Qt::ElideMiddle);
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->setModel(new QStringListModel(view));
    return view;
}

QStringListModel *textsOf(const QListView *view)
{
    return static_cast<QStringListModel *>(view->model());
}

void showTexts(QListView *view, const QStringList &texts)
{
    QStringListModel *model = textsOf(view);
    const int shown = model->rowCount();
    if (shown == texts.size() && model->stringList() == texts)
        return;
    const int selected = selectedRow(view);
    model->setStringList(texts);
    if (selected >= 0 && texts.size() > shown)
        view->setCurrentIndex(model->index(selected));
}

int selectedRow(const QListView *view)
{
    const QModelIndexList selected = view->selectionModel()->selectedIndexes();
    return selected.isEmpty() ? -1 : selected.first().row();
}

QPushButton *toolButton(QWidget *parent, const char *name, const QString &text,
                        const QString &toolTip)
{
    auto *button = new QPushButton(text, parent);
    button->setObjectName(QLatin1String(name));
    button->setAutoDefault(false);
    if (!toolTip.isEmpty()) {
        button->setToolTip(toolTip);
        button->setAccessibleName(toolTip);
    }
    return button;
}
