#include "linkdrop.h"

#include <QDropEvent>
#include <QMimeData>
#include <QUrl>
#include <QWidget>

QString droppedAddress(const QMimeData &data)
{
    // A file of this machine is no download: the drop is refused as it comes.
    for (const QUrl &url : data.urls()) {
        if (!url.isEmpty() && !url.isLocalFile())
            return url.toString(QUrl::FullyEncoded);
    }
    if (data.hasUrls())
        return {};
    const QStringList lines = data.text().split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        QString address = line.trimmed();
        if (!address.isEmpty())
            return address;
    }
    return {};
}

LinkDropTarget::LinkDropTarget(QWidget *target, std::function<void(const QString &)> take)
    : QObject(target), m_take(std::move(take))
{
    target->setAcceptDrops(true);
    target->installEventFilter(this);
}

bool LinkDropTarget::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove: {
        auto *drag = static_cast<QDropEvent *>(event);
        if (!droppedAddress(*drag->mimeData()).isEmpty())
            drag->acceptProposedAction();
        return true;
    }
    case QEvent::Drop: {
        auto *drop = static_cast<QDropEvent *>(event);
        const QString address = droppedAddress(*drop->mimeData());
        if (address.isEmpty())
            return true;
        drop->acceptProposedAction();
        QMetaObject::invokeMethod(
            this, [this, address] { m_take(address); }, Qt::QueuedConnection);
        return true;
    }
    default:
        return QObject::eventFilter(watched, event);
    }
}
