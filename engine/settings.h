#pragma once

#include <QString>
#include <QStringList>

// The user's settings, each named after the control that edits it. Check boxes hold 0 or 1;
// each spin box has a text twin that the settings file stores (`segs` for `segsv`, ...).
struct Settings
{
    // General
    QString defdir; // ends in the separator once read from the file
    int initstart = 1;
    int showmsg = 0;
    int exevirus = 0;
    QStringList ext = {".zip", ".exe", ".cab", ".tar", ".ace", ".com", ".arj",
                       ".doc", ".vb",  ".vbs", ".gz",  ".js",  ".pif"};
    QString virus;

    // Downloads
    QString segs = QStringLiteral("5");
    int segsv = 5; // seconds between retries, 5-60
    QString veces = QStringLiteral("5");
    int vecesv = 5; // retries, 0-50
    QString maxdesc = QStringLiteral("10");
    int maxdescval = 10; // 1-40
    QString wait = QStringLiteral("10");
    int waitv = 10; // seconds without data, 5-40
    int delinc = 0;
    int dellista = 0;
    int autocont = 1;

    // Updates (kept in the file; nothing acts on them)
    int checkact = 1;
    bool autoact = false;
    bool notact = true;

    // Notifications
    bool msgsys = false;
    bool msgdialog = true;
    bool msgno = false;
    int wavs = 1;
    QString histrut;
    int histsize = 10; // Kbytes, 1-5000
    QString hsizet = QStringLiteral("10");
};
