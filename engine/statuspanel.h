#pragma once

// The panels of the main window's status bar: the download count, the speeds, and every message
// the engine has for the person.
enum class StatusPanel
{
    Descargas,
    Velmedia,
    Mensajes
};
