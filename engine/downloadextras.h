#pragma once

#include <QHash>
#include <QString>

class Desktop;

// What a download carries beyond the lines of the list files: the page it was found on and the
// browser's cookies for its address (sent with every request of the download, never logged), and
// the version of the server's file that the bytes on disk belong to, so that a resume never joins
// two versions.
struct DownloadExtras
{
    QString referer = {};
    QString cookie = {};
    QString validator = {}; // the ETag, else the Last-Modified date, of the reply that started it
    // What is still to fetch of a download that runs on several connections (a PartPlan's text).
    QString parts = {};

    bool isEmpty() const
    {
        return referer.isEmpty() && cookie.isEmpty() && validator.isEmpty() && parts.isEmpty();
    }
    bool operator==(const DownloadExtras &) const = default;
};

// The extras of a list's downloads, keyed by their paths, in a file beside the list file (the
// list files keep their layout). Written atomically; a list without extras leaves no file.
using ExtrasByPath = QHash<QString, DownloadExtras>;
// Throws Failure when the file cannot be written.
void writeExtras(const QString &file, const ExtrasByPath &extras);
// A missing file has no extras; throws Failure on a file that is not such a file, and skips the
// entries it cannot use.
ExtrasByPath readExtras(const QString &file);
// readExtras for a list being loaded: a file that cannot be read is reported, and the list is
// read without its extras.
ExtrasByPath loadExtras(const QString &file, Desktop &desktop);
