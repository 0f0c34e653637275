#pragma once

#include <QString>

struct ListRecord;

// What the detail window shows of one download.
struct DownloadInfo
{
    QString caption; // the window's title
    QString url;
    QString destino;
    QString totalsize;
    QString actsize;
    QString downloaded; // "Descargados X de Y"
    QString tiempo;
    QString estado;
    bool allowredo = false;
    double done = 0;    // the part on disk, 0 to 1; 0 while the size is unknown
    QString conexiones; // "Conexiones: n" while a download runs on several; empty otherwise
};

namespace DownloadState {
inline const QString Finished = QStringLiteral("Finalizado");
inline const QString Exhausted = QStringLiteral("Se han agotado los reintentos");
inline const QString Running = QStringLiteral("Descargando");
inline const QString Connecting = QStringLiteral("Conectando...");
inline const QString Paused = QStringLiteral("Pausado");
} // namespace DownloadState

// `record.bytes` is the number of bytes on disk; a total of 0 or less is not known yet.
DownloadInfo describeDownload(const ListRecord &record, const QString &estado);
