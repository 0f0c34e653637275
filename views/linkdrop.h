#pragma once

#include <QObject>
#include <functional>

class QMimeData;
class QWidget;

// The address in what was dropped: the first link of a link list (files of this machine are not
// links), else the first line of the text; empty when there is neither.
QString droppedAddress(const QMimeData &data);

// Lets links be dropped anywhere on `target` and hands each address to `take` once the drop is
// over (taking it may open dialogs, which must not run inside the drop).
class LinkDropTarget final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LinkDropTarget)

public:
    LinkDropTarget(QWidget *target, std::function<void(const QString &)> take);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    std::function<void(const QString &)> m_take;
};
