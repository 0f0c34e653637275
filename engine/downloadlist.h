#pragma once

#include "downloadslot.h"

#include <QList>
#include <QObject>
#include <QString>
#include <optional>
#include <utility>

// What a row of a list window shows of one download.
struct RowContent
{
    QString archivo;
    QString url;
    QString toolTip;
    QString bytes;                 // the size text; none before the first count
    std::optional<int> porcentaje; // none while the size is not known
    DownloadStatus status = DownloadStatus::Running;
    bool locked = false;
    // A download on several connections: the stretches of the file already fetched, as
    // fractions of its size (from, to), in order. Empty on one connection.
    QList<std::pair<double, double>> parts;
};

// What both download lists announce and answer, for the windows that show them. A slot holds a
// download from `added` to `removed`; slot 0 never does.
class DownloadList : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DownloadList)

public:
    using QObject::QObject;

    virtual bool existe(int index) const = 0;
    // The highest slot holding a download, 0 when there is none.
    virtual int highestIndex() const = 0;
    virtual RowContent row(int index) const = 0;
    virtual int seleccionado() const = 0;
    virtual void setSeleccionado(int index) = 0;
    // Asks for the details of the selected download.
    virtual void CallProp() = 0;

Q_SIGNALS:
    void added(int index);
    // What the download's row shows changed, other than its progress.
    void changed(int index);
    void removed(int index);
    // Downloads moved on: one notice for any number of chunks, a few times a second at most.
    void progressed();
    void selectionChanged();
    // Show the detail window for this slot.
    void propertiesRequested(int index);
};
