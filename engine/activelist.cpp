#include "activelist.h"

#include "desktop.h"
#include "failure.h"
#include "historysink.h"
#include "inactivelist.h"
#include "listrecord.h"
#include "settings.h"
#include "textfile.h"
#include "texts.h"
#include "transfer.h"
#include "urls.h"

#include <QFile>
#include <QFileInfo>
#include <cmath>

namespace {

// Rows and transfers may be removed from inside one of their own handlers; they go once the
// handler has returned.
template <typename T> void disposeLater(QObject *context, std::unique_ptr<T> &owner)
{
    if (!owner)
        return;
    std::shared_ptr<T> last(owner.release());
    QMetaObject::invokeMethod(
        context, [last] {}, Qt::QueuedConnection);
}

} // namespace

ActiveList::ActiveList(const Settings &settings, Desktop &desktop, HistorySink &history,
                       const ProgramFolder &folder, RowFactory rows, QObject *parent)
    : QObject(parent), m_settings(settings), m_desktop(desktop), m_history(history),
      m_folder(folder), m_notifier(settings, desktop, folder), m_makeRow(std::move(rows))
{
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
    for (auto &transfer : m_transfers) {
        if (transfer)
            transfer->stop();
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
        if (!m_rows[i])
            return i;
    }
    throw Failure(QStringLiteral("No queda sitio en la lista"));
}

bool ActiveList::hasRow(int index) const
{
    return index > 0 && index < SlotCount && m_rows[index];
}

int ActiveList::addnew(const QString &Data, const QString &path, qint64 total, qint64 bytes,
                       bool allowredo, qint64 tiempo, bool loading, const QString &usernm,
                       const QString &passw, bool rememb)
{
    int i = 0;
    try {
        i = nextFreeIndex();
        m_rows[i] = m_makeRow(i);
        DownloadRow &row = *m_rows[i];
        row.setArchivo(path);
        row.setUrl(Data);

        DownloadSlot &slot = m_slots[i];
        slot = DownloadSlot();
        slot.path = path;
        slot.Data = Data;
        slot.bytes = slot.bytesinicio = bytes;
        slot.total = total;
        slot.tiempo = slot.tiempoinicio = tiempo;
        slot.usernm = usernm;
        slot.passw = passw;
        slot.rememb = rememb;

        m_transfers[i] = std::make_unique<Transfer>(*this, i, m_settings.vecesv);
        if (!m_transfers[i]->aim()) {
            // The person has been told "Dirección incorrecta."; the add is undone silently.
            m_transfers[i].reset();
            m_rows[i].reset();
            return 0;
        }
        slot.allowredo = allowredo;
        slot.activa = true;
        // A saved download of known size that is already all there is not started again. A
        // new download (no size yet) is of course started.
        if (total != 0 && total == bytes)
            row.DownloadEnd();
        else
            m_transfers[i]->start();
        row.setToolTip(QStringLiteral("Descargando ") + Data + QStringLiteral(" a ") + path);
        row.setReconectando(true);
        Q_EMIT rowsChanged();
        if (!loading)
            guardar_lista_activas();
        return i;
    } catch (const Failure &) {
        if (i > 0) {
            m_transfers[i].reset();
            m_rows[i].reset();
            m_slots[i].activa = false;
        }
        m_desktop.messageBox(QStringLiteral("No se ha podido agregar el archivo:\r\n") + Data,
                             Desktop::Icon::Critical);
        return 0;
    }
}

void ActiveList::AgregarArrastrando(const QString &url)
{
    const QString path = m_desktop.saveFileDialog(m_settings.defdir + FileNameOf(url), QString());
    FtpCredentials login{QString(), QString(), false};
    if (url.startsWith(QLatin1String("ftp://")))
        login = m_desktop.askFtpLogin(LoginCaption, FtpCredentials());
    if (path.isEmpty())
        return;
    // The template row is counted, so one download fewer than the setting runs at once.
    if (rowCount() >= m_settings.maxdescval) {
        if (m_inactive && m_inactive->rowCount() < SlotCount)
            m_inactive->addnew(url, path, 0, 0, false, 0, false, login.usernm, login.passw,
                               login.rememb, false);
        else
            m_desktop.messageBox(QStringLiteral("Se ha alcanzado el máximo de descargas en cola."),
                                 Desktop::Icon::Critical);
        return;
    }
    addnew(url, path, 0, 0, false, 0, false, login.usernm, login.passw, login.rememb);
}

bool ActiveList::existe(int index) const
{
    return index > 0 && index < SlotCount && m_slots[index].activa;
}

void ActiveList::unload(int index)
{
    if (m_transfers[index])
        m_transfers[index]->stop();
    disposeLater(this, m_transfers[index]);
    if (m_rows[index])
        Q_EMIT rowRemoved(index);
    disposeLater(this, m_rows[index]);
    if (m_selected == index)
        setSeleccionado(0);
}

void ActiveList::delfile(int index, bool borrar)
{
    if (index <= 0 || index >= SlotCount)
        return;
    unload(index);
    DownloadSlot &slot = m_slots[index];
    slot.activa = false;
    slot.tiempoinicio = 0;
    slot.bytesinicio = 0;
    if (borrar && QFileInfo::exists(slot.path))
        QFile::remove(slot.path);
    Q_EMIT rowsChanged();
    guardar_lista_activas();
}

void ActiveList::toinact(int index)
{
    if (!existe(index) || !m_inactive)
        return;
    const DownloadSlot &slot = m_slots[index];
    m_inactive->addnew(slot.Data, slot.path, slot.total, slot.bytes, slot.allowredo, slot.tiempo,
                       false, slot.usernm, slot.passw, slot.rememb, false);
    guardar_lista_activas();
}

void ActiveList::delend()
{
    for (int i = 0; i <= highestIndex(); ++i) {
        if (i == m_selected)
            setSeleccionado(0);
        if (m_slots[i].activa && m_rows[i] && m_rows[i]->finalizado()) {
            unload(i);
            m_slots[i].path.clear();
            m_slots[i].activa = false;
        }
    }
    Q_EMIT rowsChanged();
}

void ActiveList::guardar_lista_activas()
{
    TextFileWriter writer;
    for (int i = 1; i <= highestIndex(); ++i) {
        const DownloadSlot &slot = m_slots[i];
        if (!slot.activa || !m_rows[i] || m_rows[i]->finalizado())
            continue;
        writeRecord(writer,
                    ListRecord{slot.Data, slot.path, slot.total, slot.bytes, slot.tiempo,
                               slot.allowredo, slot.usernm, slot.passw, slot.rememb, false},
                    ListKind::Active);
    }
    try {
        writer.commit(m_folder.file(QStringLiteral("activas.dwn")));
    } catch (const Failure &failure) {
        showStatus(StatusPanel::Mensajes, failure.description());
    }
}

void ActiveList::load()
{
    const QString path = m_folder.file(QStringLiteral("activas.dwn"));
    if (!QFileInfo::exists(path))
        return;
    try {
        TextFileReader reader = TextFileReader::open(path);
        while (!reader.atEnd()) {
            const ListRecord record = readRecord(reader, ListKind::Active);
            // The saved time is dropped on purpose: elapsed time starts again after a restart.
            addnew(record.Data, record.path, record.total, record.bytes, record.allowredo, 0, true,
                   record.usernm, record.passw, record.rememb);
        }
    } catch (const Failure &failure) {
        m_desktop.messageBox(QStringLiteral("Error al cargar lista de activas: ") +
                                 failure.description(),
                             Desktop::Icon::Critical, QStringLiteral("Error"));
    }
}

void ActiveList::setSeleccionado(int index)
{
    if (hasRow(m_selected))
        m_rows[m_selected]->setSelected(false);
    m_selected = hasRow(index) ? index : 0;
    if (m_selected)
        m_rows[m_selected]->setSelected(true);
    describeSelected();
}

void ActiveList::showStatus(StatusPanel panel, const QString &text)
{
    Q_EMIT statusText(panel, text);
}

void ActiveList::showProgress(int index)
{
    const DownloadSlot &slot = m_slots[index];
    DownloadRow &row = *m_rows[index];
    row.setBytes(slot.bytes, SizeUnits::FromThreshold);
    if (slot.total > 0)
        row.setPorcentaje(int(std::nearbyint(progressPercent(slot))));
    if (index == m_selected) {
        m_progressPending = true;
        Q_EMIT detailsChanged();
    }
}

double ActiveList::progressPercent(const DownloadSlot &slot)
{
    return roundTo2(double(slot.bytes) / double(slot.total) * 100.0);
}

const DownloadDetails &ActiveList::details() const
{
    if (m_progressPending && hasRow(m_selected)) {
        const DownloadSlot &slot = m_slots[m_selected];
        if (slot.total > 0)
            m_details.porcientot = decimalText(progressPercent(slot)) + QLatin1Char('%');
        m_details.bytest =
            QString::number(slot.bytes - 1) + QLatin1Char('/') + QString::number(slot.total);
    }
    m_progressPending = false;
    return m_details;
}

void ActiveList::transferFinished(int index)
{
    DownloadSlot &slot = m_slots[index];
    DownloadRow &row = *m_rows[index];
    slot.velocidad = 0;
    row.DownloadEnd();
    row.setFinalizado(true);
    row.setPorcentaje(100);
    showStatus(StatusPanel::Mensajes, QStringLiteral("Finalizada la descarga de ") + slot.Data);
    m_notifier.playSound(QStringLiteral("notify.wav"));
    m_history.append(QStringLiteral("\r\nLa descarga de ") + slot.Data + QStringLiteral(" a ") +
                         slot.path + QStringLiteral(" ha finalizado tras ") +
                         QString::number(slot.tiempo) + QStringLiteral(" segundos."),
                     HistoryColour::Blue);
    if (m_settings.showmsg) {
        m_notifier.playSound(QStringLiteral("notify.wav"));
        m_notifier.message(QStringLiteral("Se ha terminado la descarga de ") + slot.path,
                           QStringLiteral("download.gif"));
    }
    Q_EMIT downloadFinished(slot.path);
    const QString extension = QLatin1Char('.') + ExtensionOf(QFileInfo(slot.path).fileName());
    if (m_settings.exevirus && !m_settings.virus.isEmpty() &&
        m_settings.ext.contains(extension, Qt::CaseInsensitive))
        m_desktop.startProgram(m_settings.virus + QLatin1Char(' ') + slot.path);
    // The message above may have been open while the person removed the download.
    if (!m_rows[index])
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
    const QFileInfo file(m_slots[index].path);
    if (file.isFile() && file.size() == 0)
        QFile::remove(file.filePath());
}

void ActiveList::retriesExhausted(int index)
{
    const DownloadSlot &slot = m_slots[index];
    m_rows[index]->setRedoend(true);
    const QString url = slot.Data;
    m_notifier.reportFailure(QStringLiteral("Se han agotado los intentos para ") + url);
    discardIfEmpty(index);
    delfile(index, m_settings.delinc == 1);
    Q_EMIT downloadFailed(url);
    pullFromQueue();
}

void ActiveList::transferFailed(int index)
{
    discardIfEmpty(index);
    Q_EMIT downloadFailed(m_slots[index].Data);
}

void ActiveList::pullFromQueue()
{
    if (m_settings.autocont && m_inactive)
        m_inactive->toactivas();
}
