#include "core.h"

Core::Core(const ProgramFolder &folder, Desktop &desktop, HistorySink *echo)
    : m_folder(folder), m_settings(folder, desktop, m_history),
      m_log(m_settings.settings(), desktop),
      m_inactive(m_settings.settings(), desktop, m_history, folder),
      m_active(m_settings.settings(), desktop, m_history, folder),
      m_quick(m_active, m_inactive, m_settings.settings(), desktop, m_history),
      m_all(m_active, m_inactive, desktop, m_history)
{
    m_history.log = &m_log;
    m_history.echo = echo;
    m_active.setInactiveList(&m_inactive);
    m_inactive.setActiveList(&m_active);
    QObject::connect(&m_settings, &SettingsModel::changed, &m_active, [this] { applyExtras(); });
}

void Core::applyExtras()
{
    m_active.setSpeedLimit(m_settings.extra().speedLimit());
    m_active.setConnections(m_settings.extra().conexiones);
}

void Core::load()
{
    m_settings.load();
    applyExtras();
    m_log.open();
    m_inactive.load();
    m_active.load();
}

void Core::save()
{
    m_active.stopAll();
    m_active.guardar_lista_activas();
    m_inactive.guardar_lista_inactivas();
    m_log.close();
}
