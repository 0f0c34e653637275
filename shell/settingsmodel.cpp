#include "settingsmodel.h"

#include "desktop.h"
#include "failure.h"
#include "historysink.h"
#include "historytext.h"
#include "textfile.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <algorithm>
#include <array>
#include <vector>

namespace {

const QString FileName = QStringLiteral("corvane.ini");

constexpr std::array<SpinSetting, 5> Spins{{
    {&Settings::segsv, &Settings::segs, 5, 60},
    {&Settings::vecesv, &Settings::veces, 0, 50},
    {&Settings::maxdescval, &Settings::maxdesc, 1, 40},
    {&Settings::waitv, &Settings::wait, 5, 40},
    {&Settings::histsize, &Settings::hsizet, 1, 5000},
}};

const SpinSetting *spinFor(int Settings::*field)
{
    const auto found = std::find_if(Spins.begin(), Spins.end(), [field](const SpinSetting &spin) {
        return spin.value == field;
    });
    return found == Spins.end() ? nullptr : &*found;
}

using OptionGroup = std::vector<bool Settings::*>;
const std::array<OptionGroup, 2> OptionGroups{
    OptionGroup{&Settings::autoact, &Settings::notact},
    OptionGroup{&Settings::msgsys, &Settings::msgdialog, &Settings::msgno},
};

QString invalidValue(const QString &detail)
{
    return QStringLiteral("Valor no válido en ") + FileName + QStringLiteral(": ") + detail;
}

QString withSeparator(const QString &path)
{
    return path.endsWith(QDir::separator()) ? path : path + QDir::separator();
}

} // namespace

SettingsModel::SettingsModel(const ProgramFolder &folder, Desktop &desktop, HistorySink &history,
                             QObject *parent)
    : QObject(parent), m_folder(folder), m_desktop(desktop), m_history(history)
{
    m_settings.defdir = withSeparator(m_folder.downloadDir());
    m_settings.histrut = m_folder.file(QStringLiteral("historial.rtf"));
}

QString SettingsModel::filePath() const
{
    return m_folder.file(FileName);
}

std::span<const SpinSetting> SettingsModel::spins()
{
    return Spins;
}

bool SettingsModel::load()
{
    ExtraSettings extra;
    const bool extraRead = tell(extra.read(m_folder.file(ExtraSettings::FileName)));
    m_extra = extra;
    return loadMain() && extraRead;
}

bool SettingsModel::loadMain()
{
    // No file at all is a first start, not an error: the built-in values apply and are written
    // down at once, so the download folder and the extensions are on disk from the start.
    if (!QFileInfo::exists(filePath())) {
        Q_EMIT changed();
        return write();
    }
    QString error;
    try {
        if (!QFileInfo(filePath()).isFile())
            throw Failure(QStringLiteral("No se encuentra el archivo de configuración ") +
                          filePath());
        TextFileReader reader = TextFileReader::open(filePath());
        read(reader);
    } catch (const Failure &failure) {
        error = failure.description();
    }
    // What was read before an error stays in force, so the window must show it either way.
    Q_EMIT changed();
    if (error.isEmpty())
        return true;
    m_desktop.messageBox(error, Desktop::Icon::Critical);
    return false;
}

void SettingsModel::read(TextFileReader &reader)
{
    Settings &s = m_settings;
    const QString folder = reader.readLine();
    s.defdir = withSeparator(folder.isEmpty() ? m_folder.downloadDir() : folder);
    readCheck(reader, &Settings::initstart);
    readCheck(reader, &Settings::showmsg);
    readCheck(reader, &Settings::exevirus);
    s.virus = reader.readLine();
    readSpin(reader, *spinFor(&Settings::segsv));
    readSpin(reader, *spinFor(&Settings::vecesv));
    readCheck(reader, &Settings::delinc);
    readCheck(reader, &Settings::dellista);
    readCheck(reader, &Settings::autocont);
    readSpin(reader, *spinFor(&Settings::maxdescval));
    readSpin(reader, *spinFor(&Settings::waitv));
    readCheck(reader, &Settings::checkact);
    for (bool Settings::*option : {&Settings::autoact, &Settings::notact, &Settings::msgno,
                                   &Settings::msgdialog, &Settings::msgsys})
        readOption(reader, option);
    readCheck(reader, &Settings::wavs);
    const QString history = reader.readLine();
    s.histrut = history.isEmpty() ? m_folder.file(QStringLiteral("historial.rtf")) : history;
    // The file keeps the spin value, not the text of hsizet: the spin's change shows it.
    applySpin(*spinFor(&Settings::histsize), leadingNumber(reader.readField()));
    s.ext.clear();
    while (!reader.atEnd())
        s.ext.append(reader.readLine());
}

void SettingsModel::readCheck(TextFileReader &reader, int Settings::*field)
{
    const QString text = reader.readField();
    const qint64 value = leadingNumber(text);
    if (value != 0 && value != 1)
        throw Failure(invalidValue(QLatin1Char('"') + text +
                                   QStringLiteral("\" no es 0 ni 1 en una casilla")));
    m_settings.*field = int(value);
}

void SettingsModel::readSpin(TextFileReader &reader, const SpinSetting &spin)
{
    const QString text = reader.readField();
    m_settings.*spin.text = text;
    applySpin(spin, leadingNumber(text));
}

void SettingsModel::readOption(TextFileReader &reader, bool Settings::*field)
{
    // A False line leaves the group alone, so an all-False file keeps the button that was on.
    if (toBoolean(reader.readField()))
        turnOn(field);
}

void SettingsModel::applySpin(const SpinSetting &spin, qint64 value)
{
    if (value < spin.minimum || value > spin.maximum)
        throw Failure(invalidValue(
            QString::number(value) + QStringLiteral(" está fuera del intervalo de ") +
            QString::number(spin.minimum) + QStringLiteral(" a ") + QString::number(spin.maximum)));
    // The text box follows the spin box only when its value changes, as its change handler does.
    if (m_settings.*spin.value == value)
        return;
    m_settings.*spin.value = int(value);
    m_settings.*spin.text = QString::number(value);
}

bool SettingsModel::save()
{
    m_history.append(QStringLiteral("\r\nConfiguración cambiada a las ") +
                         timeText(QDateTime::currentDateTime()),
                     HistoryColour::Blue);
    // Both files are in the same folder: when the first cannot be written, one message says so.
    return write() && tell(m_extra.write(m_folder.file(ExtraSettings::FileName)));
}

bool SettingsModel::tell(const QString &error)
{
    if (error.isEmpty())
        return true;
    m_desktop.messageBox(error, Desktop::Icon::Critical);
    return false;
}

bool SettingsModel::write()
{
    const Settings &s = m_settings;
    TextFileWriter writer;
    writer.line(s.defdir);
    writer.number(s.initstart);
    writer.number(s.showmsg);
    writer.number(s.exevirus);
    writer.line(s.virus);
    // The text boxes are written, not the spin values: what the person typed is kept as typed.
    writer.line(s.segs);
    writer.line(s.veces);
    writer.number(s.delinc);
    writer.number(s.dellista);
    writer.number(s.autocont);
    writer.line(s.maxdesc);
    writer.line(s.wait);
    writer.number(s.checkact);
    for (bool option : {s.autoact, s.notact, s.msgno, s.msgdialog, s.msgsys})
        writer.boolean(option);
    writer.number(s.wavs);
    writer.line(s.histrut);
    writer.number(s.histsize);
    for (const QString &item : s.ext)
        writer.line(item);
    try {
        writer.commit(filePath());
    } catch (const Failure &failure) {
        m_desktop.messageBox(failure.description(), Desktop::Icon::Critical);
        return false;
    }

    // Only now, so the file keeps the empty line and the next read applies the default itself.
    if (m_settings.defdir.isEmpty()) {
        m_settings.defdir = withSeparator(m_folder.downloadDir());
        Q_EMIT changed();
    }
    return true;
}

void SettingsModel::setText(QString Settings::*field, const QString &text)
{
    if (m_settings.*field == text)
        return;
    m_settings.*field = text;
    Q_EMIT changed();
}

void SettingsModel::setCheck(int Settings::*field, bool checked)
{
    if (m_settings.*field == int(checked))
        return;
    m_settings.*field = int(checked);
    Q_EMIT changed();
}

void SettingsModel::setExtra(bool ExtraSettings::*field, bool on)
{
    if (m_extra.*field == on)
        return;
    m_extra.*field = on;
    Q_EMIT changed();
}

bool SettingsModel::setExtraNumber(int ExtraSettings::*field, int value)
{
    for (const ExtraSettings::Key &key : ExtraSettings::keys()) {
        const auto *number = std::get_if<int ExtraSettings::*>(&key.field);
        if (!number || *number != field)
            continue;
        if (value < key.minimum || value > key.maximum)
            return false;
        if (m_extra.*field != value) {
            m_extra.*field = value;
            Q_EMIT changed();
        }
        return true;
    }
    return false;
}

void SettingsModel::setOption(bool Settings::*field)
{
    if (turnOn(field))
        Q_EMIT changed();
}

bool SettingsModel::turnOn(bool Settings::*field)
{
    for (const OptionGroup &group : OptionGroups) {
        if (std::find(group.begin(), group.end(), field) == group.end())
            continue;
        bool changedAny = false;
        for (bool Settings::*option : group) {
            changedAny |= m_settings.*option != (option == field);
            m_settings.*option = option == field;
        }
        return changedAny;
    }
    return false;
}

bool SettingsModel::setSpin(int Settings::*field, int value)
{
    const SpinSetting *spin = spinFor(field);
    if (!spin || value < spin->minimum || value > spin->maximum)
        return false;
    if (m_settings.*field != value) {
        applySpin(*spin, value);
        Q_EMIT changed();
    }
    return true;
}

void SettingsModel::appendExt(const QString &item)
{
    m_settings.ext.append(item);
    Q_EMIT changed();
}

void SettingsModel::removeExt(int index)
{
    if (index < 0 || index >= m_settings.ext.size())
        return;
    m_settings.ext.removeAt(index);
    Q_EMIT changed();
}
