#pragma once

#include <QString>
#include <array>

// Which windows and bars are shown, as the `ver` menu's checks keep them in "view.win": seven
// 16-bit little-endian booleans (0 false, -1 true), 14 bytes, no header.
class ViewSwitches
{
public:
    // In the order of the file.
    enum Switch
    {
        viewweb,
        viewhist,
        viewactivas,
        viewinactivas,
        viewestadisticas,
        general,
        viequickadd,
        Count
    };

    // A first start, when there is no file at all: the bars and both lists, so that a person
    // sees where to type an address.
    static ViewSwitches firstStart();

    // What the file holds; values it lacks read as false. Throws Failure when it cannot be read.
    static ViewSwitches read(const QString &path);
    // Replaces the file; throws Failure.
    void write(const QString &path) const;

    bool on(Switch which) const { return m_on[which]; }
    void set(Switch which, bool value) { m_on[which] = value; }

private:
    std::array<bool, Count> m_on{};
};
