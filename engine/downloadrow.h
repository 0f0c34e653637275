#pragma once

#include "texts.h"

#include <QString>
#include <functional>
#include <memory>

// What the engine shows of one download. The row widget implements it; without a screen a
// plain record of the values stands in (RowState).
class DownloadRow
{
public:
    virtual ~DownloadRow() = default;

    virtual void setLocked(bool locked) = 0;
    virtual bool locked() const = 0;
    virtual void setPorcentaje(int percent) = 0;
    virtual int porcentaje() const = 0;
    // A count, not a text: the active list writes it with every chunk, and the text is made
    // only when it is shown.
    virtual void setBytes(qint64 count, SizeUnits units) = 0;
    virtual QString bytes() const = 0;
    virtual void setArchivo(const QString &text) = 0;
    virtual QString archivo() const = 0;
    virtual void setUrl(const QString &text) = 0;
    virtual QString url() const = 0;
    virtual void setSelected(bool selected) = 0;
    virtual bool selected() const = 0;
    virtual void setFinalizado(bool finished) = 0;
    virtual bool finalizado() const = 0;
    virtual void setRedoend(bool exhausted) = 0;
    virtual bool redoend() const = 0;
    virtual void setReconectando(bool reconnecting) = 0;
    virtual bool reconectando() const = 0;
    virtual void setToolTip(const QString &text) = 0;
    virtual void DownloadEnd() = 0;
};

// The text of a row's byte count; none before the first count.
inline QString rowBytesText(qint64 count, SizeUnits units)
{
    return count < 0 ? QString() : sizeText(count, units);
}

// Makes the row of slot `index` of a list; the list owns it until the slot is removed.
using RowFactory = std::function<std::unique_ptr<DownloadRow>(int index)>;

// The values a row shows, kept without drawing anything.
class RowState : public DownloadRow
{
public:
    void setLocked(bool locked) override { m_locked = locked; }
    bool locked() const override { return m_locked; }
    void setPorcentaje(int percent) override { m_percent = percent > 100 ? 100 : percent; }
    int porcentaje() const override { return m_percent; }
    void setBytes(qint64 count, SizeUnits units) override
    {
        m_bytes = count;
        m_units = units;
    }
    QString bytes() const override { return rowBytesText(m_bytes, m_units); }
    void setArchivo(const QString &text) override { m_archivo = text; }
    QString archivo() const override { return m_archivo; }
    void setUrl(const QString &text) override { m_url = text; }
    QString url() const override { return m_url; }
    void setSelected(bool selected) override { m_selected = selected; }
    bool selected() const override { return m_selected; }
    void setFinalizado(bool finished) override { m_finished = finished; }
    bool finalizado() const override { return m_finished; }
    void setRedoend(bool exhausted) override { m_redoend = exhausted; }
    bool redoend() const override { return m_redoend; }
    void setReconectando(bool reconnecting) override { m_reconnecting = reconnecting; }
    bool reconectando() const override { return m_reconnecting; }
    void setToolTip(const QString &text) override { m_toolTip = text; }
    QString toolTip() const { return m_toolTip; }
    void DownloadEnd() override { m_finished = true; }

private:
    bool m_locked = false;
    int m_percent = 0;
    qint64 m_bytes = -1;
    SizeUnits m_units = SizeUnits::FromThreshold;
    QString m_archivo;
    QString m_url;
    bool m_selected = false;
    bool m_finished = false;
    bool m_redoend = false;
    bool m_reconnecting = false;
    QString m_toolTip;
};
