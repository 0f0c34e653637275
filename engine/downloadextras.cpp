#include "downloadextras.h"

#include "desktop.h"
#include "failure.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

namespace {

const QString Referer = QStringLiteral("referer");
const QString Cookie = QStringLiteral("cookie");
const QString Validator = QStringLiteral("validator");
const QString Parts = QStringLiteral("partes");

} // namespace

void writeExtras(const QString &file, const ExtrasByPath &extras)
{
    QJsonObject entries;
    for (auto it = extras.begin(); it != extras.end(); ++it) {
        QJsonObject entry;
        for (const auto &[key, value] : {std::pair{Referer, it->referer},
                                         {Cookie, it->cookie},
                                         {Validator, it->validator},
                                         {Parts, it->parts}}) {
            if (!value.isEmpty())
                entry.insert(key, value);
        }
        if (!entry.isEmpty())
            entries.insert(it.key(), entry);
    }
    if (entries.isEmpty()) {
        QFile::remove(file);
        return;
    }
    const QByteArray bytes = QJsonDocument(entries).toJson();
    QSaveFile out(file);
    if (!out.open(QIODevice::WriteOnly) || out.write(bytes) != bytes.size() || !out.commit())
        throw Failure(out.errorString());
}

ExtrasByPath readExtras(const QString &file)
{
    QFile in(file);
    if (!in.exists())
        return {};
    if (!in.open(QIODevice::ReadOnly))
        throw Failure(in.errorString());
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(in.readAll(), &error);
    if (!document.isObject())
        throw Failure(QStringLiteral("El archivo ") + file +
                      QStringLiteral(" no tiene el formato esperado"));
    ExtrasByPath extras;
    const QJsonObject entries = document.object();
    for (auto it = entries.begin(); it != entries.end(); ++it) {
        const QJsonObject entry = it->toObject();
        const DownloadExtras read{.referer = entry.value(Referer).toString(),
                                  .cookie = entry.value(Cookie).toString(),
                                  .validator = entry.value(Validator).toString(),
                                  .parts = entry.value(Parts).toString()};
        if (!read.isEmpty())
            extras.insert(it.key(), read);
    }
    return extras;
}

ExtrasByPath loadExtras(const QString &file, Desktop &desktop)
{
    try {
        return readExtras(file);
    } catch (const Failure &failure) {
        desktop.messageBox(QStringLiteral("Error al cargar los datos de las descargas: ") +
                               failure.description(),
                           Desktop::Icon::Critical, QStringLiteral("Error"));
        return {};
    }
}
