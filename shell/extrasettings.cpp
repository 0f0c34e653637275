#include "extrasettings.h"

#include <QFileInfo>
#include <QSettings>
#include <array>

namespace {

const std::array<ExtraSettings::Key, 4> Keys{{
    {"portapapeles", &ExtraSettings::portapapeles},
    {"limitar", &ExtraSettings::limitar},
    {"limite", &ExtraSettings::limite, 0, 10'000'000},
    {"conexiones", &ExtraSettings::conexiones, 1, 16},
}};

QString invalid(const QString &key, const QString &text)
{
    return QStringLiteral("Valor no válido en ") + ExtraSettings::FileName +
           QStringLiteral(": \"") + text + QStringLiteral("\" para ") + key;
}

} // namespace

std::span<const ExtraSettings::Key> ExtraSettings::keys()
{
    return Keys;
}

QString ExtraSettings::read(const QString &path)
{
    if (!QFileInfo::exists(path))
        return {};
    if (!QFileInfo(path).isReadable())
        return QStringLiteral("No se puede leer ") + path;
    const QSettings file(path, QSettings::IniFormat);
    if (file.status() != QSettings::NoError)
        return QStringLiteral("No se puede leer ") + path;
    QString error;
    for (const Key &key : Keys) {
        const QString name = QLatin1String(key.name);
        if (!file.contains(name))
            continue;
        const QString text = file.value(name).toString();
        if (const auto *flag = std::get_if<bool ExtraSettings::*>(&key.field)) {
            if (text == QLatin1String("true") || text == QLatin1String("false"))
                this->*(*flag) = text == QLatin1String("true");
            else if (error.isEmpty())
                error = invalid(name, text);
        } else {
            bool number = false;
            const int value = text.toInt(&number);
            if (number && value >= key.minimum && value <= key.maximum)
                this->*std::get<int ExtraSettings::*>(key.field) = value;
            else if (error.isEmpty())
                error = invalid(name, text);
        }
    }
    return error;
}

QString ExtraSettings::write(const QString &path) const
{
    QSettings file(path, QSettings::IniFormat);
    for (const Key &key : Keys)
        std::visit([&](auto field) { file.setValue(QLatin1String(key.name), this->*field); },
                   key.field);
    file.sync();
    return file.status() == QSettings::NoError ? QString()
                                               : QStringLiteral("No se puede escribir ") + path;
}
