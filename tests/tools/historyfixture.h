#pragma once

#include "fakedesktop.h"
#include "historylog.h"
#include "settings.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

// A history log over a fresh program folder, the scripted desktop and a fixed clock.
struct HistoryFixture
{
    HistoryFixture()
    {
        settings.histrut = dir.filePath(QStringLiteral("historial.rtf"));
        log.setClock([this] { return now; });
    }

    QString path(const QString &name) const { return dir.filePath(name); }
    void writeFile(const QString &name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        if (file.open(QIODevice::WriteOnly))
            file.write(bytes);
    }
    QByteArray readFile(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir dir;
    Settings settings;
    FakeDesktop desktop;
    QDateTime now{QDate(2024, 1, 5), QTime(9, 3, 7)};
    HistoryLog log{settings, desktop};
};

// The start line the fixture's clock gives.
inline const QString StartLine = QStringLiteral("Iniciado a las 09:03:07 el 05/01/2024");
