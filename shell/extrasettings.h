#pragma once

#include <QString>
#include <span>
#include <variant>

// Settings that "corvane.ini" has no line for: its layout is fixed, so these live as named keys in
// a second file of the program folder. Adding one takes a member here and a row in keys().
struct ExtraSettings
{
    bool portapapeles = false; // "Vigilar el portapapeles"
    bool limitar = false;      // "Limitar velocidad a", switched on and off from the menu too
    int limite = 0;            // its Kb/s; 0 is no limit
    int conexiones = 4;        // "Conexiones por descarga", for servers that send files in parts

    // The limit the downloads keep to, in Kb/s; 0 when there is none.
    int speedLimit() const { return limitar ? limite : 0; }

    static inline const QString FileName = QStringLiteral("preferencias.ini");

    // A key of the file and the member it sets; a number is kept within its range.
    struct Key
    {
        const char *name;
        std::variant<bool ExtraSettings::*, int ExtraSettings::*> field;
        int minimum = 0;
        int maximum = 0;
    };
    static std::span<const Key> keys();

    // Reads the file at `path`; a missing file or key leaves the value as it is. Returns why a
    // value or the file could not be read (the other values are read all the same), or empty.
    QString read(const QString &path);
    // Replaces the file at `path`; returns why it could not, or empty.
    QString write(const QString &path) const;
};
