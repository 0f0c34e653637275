#pragma once

#include "downloadextras.h"

#include <QString>

// What a running download is doing; the row shows it in its colours.
enum class DownloadStatus
{
    Connecting, // asking the server, or waiting to ask again after a loss
    Running,
    Finished,
    Exhausted // failed for good: a final answer of the server, or the retries ran out
};

// The record of one download in a list. Positions are 1-based: `bytes` is the position of the
// next byte to write, so `bytes` - 1 bytes are on disk.
struct DownloadSlot
{
    QString Data; // the URL
    qint64 bytes = 0;
    qint64 total = 0;  // 0 = not known yet
    qint64 tiempo = 0; // seconds spent transferring, across connections
    QString path;
    int velocidad = 0;      // whole Kb per second
    bool allowredo = false; // the server resumes
    bool activa = false;    // the slot holds a live download
    qint64 tiempoinicio = 0;
    qint64 bytesinicio = 0;
    QString usernm;
    QString passw;
    QString ftpestado; // FTP dialogue step; empty for HTTP
    bool rememb = false;
    DownloadStatus status = DownloadStatus::Connecting;
    DownloadExtras extras;
};

// Every list keeps this many slots; slot 0 is the template and never holds a download.
inline constexpr int SlotCount = 41;
