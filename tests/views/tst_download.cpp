#include "download.h"
#include "wincolor.h"

#include <QLabel>
#include <QProgressBar>
#include <QSignalSpy>
#include <QTest>

namespace {

class EventCounter : public QObject
{
public:
    EventCounter(QEvent::Type type, int &count) : m_type(type), m_count(count) {}
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == m_type)
            ++m_count;
        return false;
    }

private:
    QEvent::Type m_type;
    int &m_count;
};

} // namespace

class TestDownload : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void percentage_data();
    void percentage();
    void lockHidesPercentage();
    void progressWritesOnlyStore();
    void longTextsElided();
    void colours_data();
    void colours();
    void layout_data();
    void layout();
    void mouseEvents();
};

void TestDownload::percentage_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("stored");
    QTest::addColumn<int>("bar");
    QTest::newRow("half") << 45 << 45 << 45;
    QTest::newRow("above 100 clamps") << 150 << 100 << 100;
    QTest::newRow("negative passes") << -5 << -5 << 0;
}

void TestDownload::percentage()
{
    QFETCH(int, value);
    QFETCH(int, stored);
    download row;
    row.setPorcentaje(value);
    QCOMPARE(row.porcentaje(), stored);
    row.refresh();
    QTEST(row.findChild<QProgressBar *>("avance")->value(), "bar");
    QCOMPARE(row.findChild<QLabel *>("porciento")->text(), QString::number(stored) + "%");
}

void TestDownload::lockHidesPercentage()
{
    download row;
    row.show();
    auto *porciento = row.findChild<QLabel *>("porciento");
    auto *candado = row.findChild<QLabel *>("candado");
    row.setPorcentaje(30);
    row.refresh();
    row.setLocked(true);
    QVERIFY(candado->isVisible() && !porciento->isVisible());
    QCOMPARE(candado->toolTip(), QStringLiteral("Archivo bloqueado"));
    row.setLocked(false);
    QVERIFY(!candado->isVisible() && porciento->isVisible());
    QCOMPARE(porciento->text(), QStringLiteral("30%"));
}

// The engine writes the progress on every chunk: the labels take it up only on the refresh,
// and nothing asks for a new layout meanwhile.
void TestDownload::progressWritesOnlyStore()
{
    download row;
    row.resize(645, 20);
    row.show();
    row.refresh();
    QCoreApplication::processEvents();
    int layoutRequests = 0;
    EventCounter counter(QEvent::LayoutRequest, layoutRequests);
    row.installEventFilter(&counter);
    for (int i = 1; i <= 1000; ++i) {
        row.setPorcentaje(i / 10);
        row.setBytes(QString::number(i) + " Kb");
    }
    QCoreApplication::processEvents();
    QCOMPARE(layoutRequests, 0);
    QCOMPARE(row.findChild<QLabel *>("nbytes")->text(), QString());
    QCOMPARE(row.bytes(), QStringLiteral("1000 Kb"));
    row.refresh();
    QCOMPARE(row.findChild<QLabel *>("nbytes")->text(), QStringLiteral("1000 Kb"));
    QCOMPARE(row.findChild<QLabel *>("porciento")->text(), QStringLiteral("100%"));
    QCOMPARE(row.findChild<QProgressBar *>("avance")->value(), 100);
}

void TestDownload::longTextsElided()
{
    download row;
    row.resize(645, 20);
    row.show();
    const QString path = "/home/usuario/Descargas/" + QString(200, 'x') + "/final.iso";
    row.setArchivo(path);
    row.setUrl("http://h/corto");
    auto *filename = row.findChild<QLabel *>("filename");
    QCOMPARE(row.archivo(), path);
    QVERIFY(filename->text().startsWith("/home") && filename->text().endsWith("final.iso"));
    QVERIFY(filename->fontMetrics().horizontalAdvance(filename->text()) <= filename->width());
    QCOMPARE(filename->toolTip(), path);
    QCOMPARE(row.findChild<QLabel *>("urll")->text(), QStringLiteral("http://h/corto"));
    QCOMPARE(row.findChild<QLabel *>("urll")->toolTip(), QString());
    // A markup-looking name is shown as it is.
    row.setArchivo("<b>negrita</b>");
    QCOMPARE(filename->textFormat(), Qt::PlainText);
}

// Each step is applied to a fresh row in order; the colours after the last step are checked.
void TestDownload::colours_data()
{
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<quint32>("base");
    QTest::addColumn<quint32>("background");
    QTest::addColumn<quint32>("labels");
    QTest::newRow("new") << QStringList{} << 0xFFFFFFu << 0xFFFFFFu << 0u;
    QTest::newRow("selected") << QStringList{"select"} << 0xFFFFFFu << SystemHighlight
                              << SystemHighlightText;
    QTest::newRow("reconnecting repaints a selected row")
        << QStringList{"select", "reconnect"} << 0xE2FFC6u << 0xE2FFC6u << SystemHighlightText;
    QTest::newRow("exhausted then deselected")
        << QStringList{"select", "redoend", "deselect"} << 0x8080FFu << 0x8080FFu << 0u;
    QTest::newRow("reconnect off goes white")
        << QStringList{"redoend", "reconnect", "connected"} << 0xFFFFFFu << 0xFFFFFFu << 0u;
    QTest::newRow("finished keeps tooltip colour")
        << QStringList{"select", "end", "deselect"} << SystemToolTipBack << SystemToolTipBack << 0u;
    QTest::newRow("finalizado alone changes nothing")
        << QStringList{"finalizado"} << 0xFFFFFFu << 0xFFFFFFu << 0u;
    QTest::newRow("selected while finished") << QStringList{"end", "select"} << SystemToolTipBack
                                             << SystemHighlight << SystemHighlightText;
}

void TestDownload::colours()
{
    QFETCH(QStringList, steps);
    download row;
    for (const QString &step : steps) {
        if (step == "select")
            row.setSelected(true);
        else if (step == "deselect")
            row.setSelected(false);
        else if (step == "reconnect")
            row.setReconectando(true);
        else if (step == "connected")
            row.setReconectando(false);
        else if (step == "redoend")
            row.setRedoend(true);
        else if (step == "end")
            row.DownloadEnd();
        else if (step == "finalizado")
            row.setFinalizado(true);
    }
    QTEST(row.baseColour(), "base");
    QTEST(row.backgroundColour(), "background");
    QTEST(row.labelColour(), "labels");
    QCOMPARE(row.palette().color(QPalette::Window), winColor(row.backgroundColour()));
    QCOMPARE(row.findChild<QLabel *>("urll")->palette().color(QPalette::WindowText),
             winColor(row.labelColour()));
}

void TestDownload::layout_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("q");
    QTest::newRow("wide") << 9675 << 2250;
    QTest::newRow("half rounds to even") << 677 << 0; // (677 - 675) / 4 = 0.5
    QTest::newRow("odd half rounds up") << 681 << 2;  // 1.5
    QTest::newRow("narrower than percentage") << 75 << -150;
}

void TestDownload::layout()
{
    QFETCH(int, width);
    QFETCH(int, q);
    const RowLayout rows = rowLayout(width, 675, 240);
    QCOMPARE(rows.q, q);
    QCOMPARE(rows.filename, QRect(0, 0, q, 300));
    QCOMPARE(rows.avance.x(), q);
    QCOMPARE(rows.porciento.x(), 2 * q);
    QCOMPARE(rows.nbytes, QRect(2 * q + 675, 0, q, 300));
    QCOMPARE(rows.urll.x(), 3 * q + 675);
    // The lock is centred over the percentage column: 675/2 - 240/2 = 217.5, rounded to even.
    QCOMPARE(rows.candado.x(), int(std::nearbyint(2 * q + 217.5)));
    QCOMPARE(rows.lineEnd, width);

    // The widget applies the same arithmetic in pixels.
    download row;
    row.resize(645, 20);
    row.show();
    QCOMPARE(row.height(), 20);
    QCOMPARE(row.findChild<QLabel *>("filename")->width(), 150);
    QCOMPARE(row.findChild<QLabel *>("nbytes")->x(), 345);
}

void TestDownload::mouseEvents()
{
    download row;
    row.resize(645, 20);
    row.show();
    QSignalSpy clicks(&row, &download::Click);
    QSignalSpy doubles(&row, &download::DblClick);
    QSignalSpy ups(&row, &download::MouseUp);
    QTest::mouseClick(row.findChild<QLabel *>("urll"), Qt::RightButton);
    QCOMPARE(ups.size(), 1);
    QCOMPARE(ups.at(0).at(0).toInt(), 2);
    QCOMPARE(clicks.size(), 0);
    QTest::mouseClick(row.findChild<QLabel *>("filename"), Qt::LeftButton);
    QCOMPARE(clicks.size(), 1);
    QTest::mouseDClick(row.findChild<QLabel *>("nbytes"), Qt::LeftButton);
    QCOMPARE(doubles.size(), 1);
    row.setLocked(true);
    QTest::mouseDClick(row.findChild<QLabel *>("candado"), Qt::LeftButton);
    QCOMPARE(doubles.size(), 1);
}

QTEST_MAIN(TestDownload)
#include "tst_download.moc"
