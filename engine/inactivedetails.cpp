// What the detail window shows of an inactive download.
#include "inactivelist.h"

void InactiveList::CallProp()
{
    if (existe(m_selected))
        Q_EMIT propertiesRequested(m_selected);
}

std::optional<DownloadInfo> InactiveList::detallado(int index) const
{
    if (!existe(index))
        return std::nullopt;
    return describeDownload(m_registros[index], DownloadState::Paused);
}
