#pragma once

#include "extrasettings.h"
#include "programfolder.h"
#include "settings.h"

#include <QObject>
#include <span>

class Desktop;
class HistorySink;
class TextFileReader;

// A spin box of the settings window: its value, the text box that shows it and its range.
struct SpinSetting
{
    int Settings::*value;
    QString Settings::*text;
    int minimum;
    int maximum;
};

// The live settings and their file "corvane.ini", with the extra settings of their own file. The
// engine keeps a reference to settings(), so every change is made in place.
class SettingsModel final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SettingsModel)

public:
    SettingsModel(const ProgramFolder &folder, Desktop &desktop, HistorySink &history,
                  QObject *parent = nullptr);

    const Settings &settings() const { return m_settings; }
    const ExtraSettings &extra() const { return m_extra; }
    QString filePath() const;
    static std::span<const SpinSetting> spins();

    // Reads the files; on the first error of each tells the person and keeps what was read so
    // far. Without "corvane.ini", writes one of the built-in values.
    bool load();
    // Logs the change and writes both files; on failure tells the person.
    bool save();

    void setText(QString Settings::*field, const QString &text);
    void setCheck(int Settings::*field, bool checked);
    void setExtra(bool ExtraSettings::*field, bool on);
    // Out of the key's range: false and nothing changes.
    bool setExtraNumber(int ExtraSettings::*field, int value);
    // Turns `field` on and the other buttons of its group off.
    void setOption(bool Settings::*field);
    // Out of range, or not a spin box: false and nothing changes.
    bool setSpin(int Settings::*field, int value);
    void appendExt(const QString &item);
    void removeExt(int index);

Q_SIGNALS:
    void changed();

private:
    bool loadMain();
    void read(TextFileReader &reader);
    bool write();
    bool tell(const QString &error);
    void readCheck(TextFileReader &reader, int Settings::*field);
    void readSpin(TextFileReader &reader, const SpinSetting &spin);
    void readOption(TextFileReader &reader, bool Settings::*field);
    void applySpin(const SpinSetting &spin, qint64 value);
    bool turnOn(bool Settings::*field);

    ProgramFolder m_folder;
    Desktop &m_desktop;
    HistorySink &m_history;
    Settings m_settings;
    ExtraSettings m_extra;
};
