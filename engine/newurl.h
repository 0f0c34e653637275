#pragma once

#include "placedownload.h"

// The "new URL" command: asks for an address (offering the clipboard's when it is one) and, for
// an FTP address, for the login, then places the download as typed addresses are placed.
class NewUrl
{
public:
    explicit NewUrl(const PlaceDownload &place) : m_place(place) {}

    // The destination path when a download was added; empty when the person cancelled or the
    // address was refused.
    QString run(const QString &clipboard);

private:
    PlaceDownload m_place;
};
