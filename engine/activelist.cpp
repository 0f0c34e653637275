#include "activelist.h"

#include "desktop.h"
#include "failure.h"
#include "historysink.h"
#include "inactivelist.h"
#include "settings.h"
#include "textfile.h"
#include "texts.h"
#include "urls.h"

#include <QFile>
#include <QFileInfo>
#include <cmath>

namespace {

ListRecord savedRecord(const DownloadSlot &record)
{
    return ListRecord{.Data = record.Data,
                      .path = record.path,
                      .total = record.total,
                      .bytes = record.bytes,
                      .tiempo = record.tiempo,
                      .allowredo = record.allowredo,
                      .usernm = record.usernm,
                      .passw = record.passw,
                      .rememb = record.rememb,
                      .extras = record.extras};
}

} // namespace

ActiveList::ActiveList(const Settings &settings, Desktop &desktop, HistorySink &history,
                       const ProgramFolder &folder, QObject *parent)
    : DownloadList(parent), m_settings(settings), m_desktop(desktop), m_history(history),
      m_folder(folder), m_notifier(settings, desktop, folder), m_login(desktop, m_notifier)
{
    for (int i = 0; i < SlotCount; ++i) {
        m_slots[i].list = this;
        m_slots[i].index = i;
    }
    m_progressNotice.setSingleShot(true);
    m_progressNotice.setInterval(ProgressNoticeMs);
    connect(&m_progressNotice, &QTimer::timeout, this, &DownloadList::progressed);
    m_saveSoon.setSingleShot(true);
    m_saveSoon.setInterval(SaveSoonMs);
    connect(&m_saveSoon, &QTimer::timeout, this, &ActiveList::guardar_lista_activas);
    m_tiempotrans.setInterval(1000);
    m_update.setInterval(1000);
    m_shutdown.setInterval(2000);
    connect(&m_tiempotrans, &QTimer::timeout, this, &ActiveList::tiempotransTick);
    connect(&m_update, &QTimer::timeout, this, &ActiveList::updateTick);
    connect(&m_shutdown, &QTimer::timeout, this, &ActiveList::shutdownTick);
}

ActiveList::~ActiveList()
{
    stopAll();
}

void ActiveList::stopAll()
{
    for (const Slot &slot : m_slots) {
        if (slot.transfer)
            slot.transfer->stop();
    }
}

void ActiveList::startTimers()
{
    m_tiempotrans.start();
    m_update.start();
    m_shutdown.start();
}

int ActiveList::nextFreeIndex() const
{
    for (int i = 1; i < SlotCount; ++i) {
        if (!m_slots[i].record.activa)
            return i;
    }
    throw Failure(QStringLiteral("No queda sitio en la lista"));
}

bool ActiveList::existe(int index) const
{
    return index > 0 && index < SlotCount && m_slots[index].record.activa;
}

int ActiveList::rowCount() const
{
    int count = 1;
    for (int i = 1; i < SlotCount; ++i)
        count += m_slots[i].record.activa ? 1 : 0;
    return count;
}

int ActiveList::highestIndex() const
{
    for (int i = SlotCount - 1; i > 0; --i) {
        if (m_slots[i].record.activa)
            return i;
    }
    return 0;
}

int ActiveList::addnew(const ListRecord &given, Loading loading)
{
    const ListRecord download = withLoginApart(given);
    int i = 0;
    try {
        i = nextFreeIndex();
        // An address that is no address has been refused with "Dirección incorrecta."; the add
        // is undone silently.
        if (HostOf(download.Data, m_desktop) == HostError)
            return 0;
        Slot &slot = m_slots[i];
        DownloadSlot &record = slot.record;
        record = DownloadSlot();
        record.path = download.path;
        record.Data = download.Data;
        record.bytes = record.bytesinicio = download.bytes;
        record.total = download.total;
        record.tiempo = record.tiempoinicio = download.tiempo;
        record.usernm = download.usernm;
        record.passw = download.passw;
        record.rememb = download.rememb;
        record.allowredo = download.allowredo;
        record.extras = download.extras;
        slot.url = download.Data;
        slot.progressShown = false;
        slot.transfer = Transfer::make(record, slot,
                                       TransferContext{m_settings, m_desktop, m_notifier, m_login,
                                                       m_limit, m_connections},
                                       m_settings.vecesv)
                            .release();
        slot.transfer->setParent(this);
        record.activa = true;
        // A saved download of known size that is already all there is not started again. A
        // new download (no size yet) is of course started.
        if (download.total != 0 && download.total == download.bytes)
            record.status = DownloadStatus::Finished;
        else
            slot.transfer->start();
        Q_EMIT added(i);
        if (loading == Loading::No)
            guardar_lista_activas();
        return i;
    } catch (const Failure &) {
        if (i > 0)
            m_slots[i].record.activa = false;
        m_desktop.messageBox(QStringLiteral("No se ha podido agregar el archivo:\r\n") +
                                 download.Data,
                             Desktop::Icon::Critical);
        return 0;
    }
}

void ActiveList::AgregarArrastrando(const QString &url)
{
    const bool ownLogin = SplitLogin(url).address != url;
    const QString path = m_desktop.saveFileDialog(
        m_settings.defdir + FileNameOf(SplitLogin(url).address), QString());
    FtpCredentials login{QString(), QString(), false};
    if (url.startsWith(QLatin1String("ftp://")) && !ownLogin)
        login = m_desktop.askFtpLogin(LoginCaption, FtpCredentials());
    if (path.isEmpty())
        return;
    const ListRecord download{.Data = url,
                              .path = path,
                              .usernm = login.usernm,
                              .passw = login.passw,
                              .rememb = login.rememb};
    // The unused slot 0 is counted, so one download fewer than the setting runs at once.
    if (rowCount() < m_settings.maxdescval)
        addnew(download);
    else if (m_inactive && m_inactive->rowCount() < SlotCount)
        m_inactive->addnew(download);
    else
        m_desktop.messageBox(QStringLiteral("Se ha alcanzado el máximo de descargas en cola."),
                             Desktop::Icon::Critical);
}

// The transfer may be removed from inside one of its own handlers: it goes once that returned.
void ActiveList::unload(int index)
{
    Slot &slot = m_slots[index];
    if (slot.transfer) {
        slot.transfer->stop();
        slot.transfer->deleteLater();
        slot.transfer = nullptr;
    }
    const bool shown = slot.record.activa;
    slot.record.activa = false;
    if (m_selected == index)
        setSeleccionado(0);
    if (shown)
        Q_EMIT removed(index);
}

void ActiveList::delfile(int index, bool borrar)
{
    if (index <= 0 || index >= SlotCount)
        return;
    unload(index);
    DownloadSlot &record = m_slots[index].record;
    record.tiempoinicio = 0;
    record.bytesinicio = 0;
    if (borrar && QFileInfo::exists(record.path))
        QFile::remove(record.path);
    guardar_lista_activas();
}

void ActiveList::toinact(int index)
{
    if (!existe(index) || !m_inactive)
        return;
    m_inactive->addnew(savedRecord(m_slots[index].record));
    guardar_lista_activas();
}

void ActiveList::delend()
{
    for (int i = 0; i <= highestIndex(); ++i) {
        if (i == m_selected)
            setSeleccionado(0);
        DownloadSlot &record = m_slots[i].record;
        if (record.activa && record.status == DownloadStatus::Finished) {
            unload(i);
            record.path.clear();
        }
    }
}

void ActiveList::guardar_lista_activas()
{
    m_saveSoon.stop();
    TextFileWriter writer;
    ExtrasByPath extras;
    for (int i = 1; i <= highestIndex(); ++i) {
        const DownloadSlot &record = m_slots[i].record;
        if (record.activa && record.status != DownloadStatus::Finished) {
            writeRecord(writer, savedRecord(record), ListKind::Active);
            extras.insert(record.path, record.extras);
        }
    }
    try {
        writer.commit(m_folder.file(QStringLiteral("activas.dwn")));
        if (extras != m_savedExtras) {
            writeExtras(m_folder.file(QStringLiteral("activas.json")), extras);
            m_savedExtras = std::move(extras);
        }
        for (const Slot &slot : m_slots) {
            if (slot.transfer)
                slot.transfer->listSaved();
        }
    } catch (const Failure &failure) {
        Q_EMIT statusText(StatusPanel::Mensajes, failure.description());
    }
}

void ActiveList::load()
{
    const QString path = m_folder.file(QStringLiteral("activas.dwn"));
    if (!QFileInfo::exists(path))
        return;
    const ExtrasByPath extras =
        loadExtras(m_folder.file(QStringLiteral("activas.json")), m_desktop);
    try {
        TextFileReader reader = TextFileReader::open(path);
        while (!reader.atEnd()) {
            ListRecord record = readRecord(reader, ListKind::Active);
            // The saved time is dropped on purpose: elapsed time starts again after a restart.
            record.tiempo = 0;
            record.extras = extras.value(record.path);
            addnew(record, Loading::Yes);
        }
    } catch (const Failure &failure) {
        m_desktop.messageBox(QStringLiteral("Error al cargar lista de activas: ") +
                                 failure.description(),
                             Desktop::Icon::Critical, QStringLiteral("Error"));
    }
}

void ActiveList::setSeleccionado(int index)
{
    m_selected = existe(index) ? index : 0;
    describeSelected();
    Q_EMIT selectionChanged();
}

RowContent ActiveList::row(int index) const
{
    const Slot &slot = m_slots.at(index);
    const DownloadSlot &record = slot.record;
    RowContent row;
    row.archivo = record.path;
    row.url = slot.url;
    row.toolTip = QStringLiteral("Descargando ") + slot.url + QStringLiteral(" a ") + record.path;
    if (slot.progressShown)
        row.bytes = sizeText(record.bytes, SizeUnits::FromThreshold);
    if (record.status == DownloadStatus::Finished)
        row.porcentaje = 100;
    else if (record.total > 0)
        row.porcentaje = int(std::nearbyint(progressPercent(record)));
    row.status = record.status;
    if (slot.transfer && record.status != DownloadStatus::Finished)
        row.parts = slot.transfer->fetchedParts();
    return row;
}

void ActiveList::Slot::progressed()
{
    progressShown = true;
    if (index == list->m_selected)
        list->m_progressPending = true;
    list->noteProgress();
}

void ActiveList::noteProgress()
{
    if (!m_progressNotice.isActive())
        m_progressNotice.start();
}

double ActiveList::progressPercent(const DownloadSlot &slot)
{
    return roundTo2(double(slot.bytes) / double(slot.total) * 100.0);
}

const DownloadDetails &ActiveList::details() const
{
    if (m_progressPending && existe(m_selected)) {
        const DownloadSlot &record = m_slots[m_selected].record;
        if (record.total > 0)
            m_details.porcientot = decimalText(progressPercent(record)) + QLatin1Char('%');
        m_details.bytest =
            QString::number(record.bytes - 1) + QLatin1Char('/') + QString::number(record.total);
    }
    m_progressPending = false;
    return m_details;
}

void ActiveList::transferFinished(int index)
{
    DownloadSlot &record = m_slots[index].record;
    record.velocidad = 0;
    record.status = DownloadStatus::Finished;
    Q_EMIT changed(index);
    noteProgress();
    Q_EMIT statusText(StatusPanel::Mensajes,
                      QStringLiteral("Finalizada la descarga de ") + record.Data);
    m_notifier.playSound(QStringLiteral("notify.wav"));
    m_history.append(QStringLiteral("\r\nLa descarga de ") + record.Data + QStringLiteral(" a ") +
                         record.path + QStringLiteral(" ha finalizado tras ") +
                         QString::number(record.tiempo) + QStringLiteral(" segundos."),
                     HistoryColour::Blue);
    const QString path = record.path;
    if (m_settings.showmsg) {
        m_notifier.playSound(QStringLiteral("notify.wav"));
        m_notifier.message(QStringLiteral("Se ha terminado la descarga de ") + path,
                           QStringLiteral("download.gif"));
    }
    Q_EMIT downloadFinished(path);
    const QString extension = QLatin1Char('.') + ExtensionOf(QFileInfo(path).fileName());
    if (m_settings.exevirus && !m_settings.virus.isEmpty() &&
        m_settings.ext.contains(extension, Qt::CaseInsensitive))
        m_desktop.startProgram(m_settings.virus + QLatin1Char(' ') + path);
    // The message above may have been open while the person removed the download.
    if (!holds(index, path))
        return;
    if (m_settings.dellista)
        delfile(index, false);
    else
        guardar_lista_activas();
    pullFromQueue();
}

// A download that failed for good before its first byte leaves no empty file behind.
void ActiveList::discardIfEmpty(int index)
{
    const QFileInfo file(m_slots[index].record.path);
    if (file.isFile() && file.size() == 0)
        QFile::remove(file.filePath());
}

void ActiveList::retriesExhausted(int index)
{
    DownloadSlot &record = m_slots[index].record;
    record.status = DownloadStatus::Exhausted;
    Q_EMIT changed(index);
    const QString url = record.Data;
    m_notifier.reportFailure(QStringLiteral("Se han agotado los intentos para ") + url);
    discardIfEmpty(index);
    delfile(index, m_settings.delinc == 1);
    Q_EMIT downloadFailed(url);
    pullFromQueue();
}

void ActiveList::transferFailed(int index)
{
    discardIfEmpty(index);
    Q_EMIT downloadFailed(m_slots[index].record.Data);
}

void ActiveList::pullFromQueue()
{
    if (m_settings.autocont && m_inactive)
        m_inactive->toactivas();
}
