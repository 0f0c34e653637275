#include "downloadinfo.h"

#include "listrecord.h"
#include "texts.h"

#include <algorithm>

DownloadInfo describeDownload(const ListRecord &record, const QString &estado)
{
    DownloadInfo info;
    info.caption = QStringLiteral("Información de ") + record.path;
    info.url = record.Data;
    info.destino = record.path;
    const bool sizeKnown = record.total > 0;
    info.totalsize =
        sizeKnown ? sizeText(record.total, SizeUnits::AboveThreshold) : QStringLiteral("*");
    info.actsize = sizeText(record.bytes, SizeUnits::AboveThreshold);
    info.downloaded =
        QStringLiteral("Descargados ") + info.actsize + QStringLiteral(" de ") + info.totalsize;
    info.tiempo = elapsedText(record.tiempo);
    info.estado = estado;
    info.allowredo = record.allowredo;
    if (sizeKnown)
        info.done = std::clamp(double(record.bytes) / double(record.total), 0.0, 1.0);
    return info;
}
