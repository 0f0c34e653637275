#include "detailmodel.h"

#include "activelist.h"
#include "inactivelist.h"

namespace {

template <typename List> DetailModel::Source sourceIn(List &list, int index)
{
    const std::optional<DownloadInfo> first = list.detallado(index);
    if (!first)
        return {};
    return [&list, index, path = first->destino]() -> std::optional<DownloadInfo> {
        std::optional<DownloadInfo> info = list.detallado(index);
        if (!info || info->destino != path)
            return std::nullopt;
        return info;
    };
}

} // namespace

DetailModel::Source activeSource(ActiveList &list, int index)
{
    return sourceIn(list, index);
}

DetailModel::Source inactiveSource(InactiveList &list, int index)
{
    return sourceIn(list, index);
}

void DetailModel::describe(Source source)
{
    m_source = std::move(source);
    m_info = DownloadInfo();
    if (m_source)
        refresh();
    else
        Q_EMIT changed();
}

void DetailModel::refresh()
{
    if (!m_source)
        return;
    if (std::optional<DownloadInfo> info = m_source())
        m_info = *info;
    else
        m_source = nullptr;
    Q_EMIT changed();
}
