#pragma once

#include <QLayout>
#include <QList>

// Lays its items out left to right in lines, each at least as wide as its minimum, and starts a
// new line where the next one does not fit; a line's spare width is shared by its items. A
// widget whose horizontal policy is Expanding takes a line of its own. So a narrow window gets
// more lines, never cut items.
class FlowLayout final : public QLayout
{
public:
    explicit FlowLayout(QWidget *parent = nullptr) : QLayout(parent) {}
    ~FlowLayout() override;

    void addItem(QLayoutItem *item) override;
    int count() const override { return int(m_items.size()); }
    QLayoutItem *itemAt(int index) const override { return m_items.value(index); }
    QLayoutItem *takeAt(int index) override;

    Qt::Orientations expandingDirections() const override { return Qt::Horizontal; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize minimumSize() const override;
    QSize sizeHint() const override;
    void setGeometry(const QRect &rect) override;

private:
    // Places the items in `rect` when `apply`; the height they take either way.
    int arrange(const QRect &rect, bool apply) const;

    QList<QLayoutItem *> m_items;
};
