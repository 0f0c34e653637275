#include "activelist.h"
#include "fakedesktop.h"
#include "grafica.h"
#include "recordinghistory.h"
#include "settings.h"
#include "statswindow.h"

#include <QLabel>
#include <QTemporaryDir>
#include <QTest>

class TestGrafica : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void maximum_data();
    void maximum();
    void positions_data();
    void positions();
    void fedBySpeed();
};

void TestGrafica::maximum_data()
{
    QTest::addColumn<QList<int>>("values");
    QTest::addColumn<int>("max");
    QTest::newRow("none") << QList<int>{} << 20;
    QTest::newRow("below the scale") << QList<int>{5, 20} << 20;
    QTest::newRow("above it") << QList<int>{25} << 45;
    QTest::newRow("never shrinks") << QList<int>{25, 30, 0} << 45;
    QTest::newRow("grows again") << QList<int>{25, 46} << 66;
}

void TestGrafica::maximum()
{
    QFETCH(QList<int>, values);
    GraphModel graph;
    for (int value : values)
        graph.addvalue(value, QString::number(value) + " Kb/seg");
    QTEST(graph.Max(), "max");
}

void TestGrafica::positions_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<QList<int>>("values");
    QTest::addColumn<QList<QPointF>>("points"); // of points 0, 4 and 8
    // Before any value every point lies on the baseline, 100 above the bottom.
    QTest::newRow("empty") << 9000 << 3000 << QList<int>{}
                           << QList<QPointF>{{80, 2900}, {4080, 2900}, {8080, 2900}};
    QTest::newRow("full scale, narrow")
        << 900 << 2000 << QList<int>{10}
        << QList<QPointF>{{80, 1900}, {480, 1900}, {880, 2000 - 2000.0 / 20 * 10 - 100}};
    // The scale grew to 45: a value of 45 reaches the top less the marker.
    QTest::newRow("after growing") << 4500 << 4500 << QList<int>{25, 45}
                                   << QList<QPointF>{{80, 4400}, {2080, 4400}, {4080, -100}};
}

void TestGrafica::positions()
{
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(QList<int>, values);
    QFETCH(QList<QPointF>, points);
    GraphModel graph;
    for (int value : values)
        graph.addvalue(value, QString::number(value) + " Kb/seg");
    QCOMPARE(graph.pointAt(0, width, height), points[0]);
    QCOMPARE(graph.pointAt(4, width, height), points[1]);
    QCOMPARE(graph.pointAt(8, width, height), points[2]);
    // Labels sit 60 above their point, centred on it.
    const QPointF label = graph.labelAt(8, width, height, QSizeF(600, 200));
    QCOMPARE(label, QPointF(points[2].x() + 50 - 300, points[2].y() - 60 - 200));
}

// The window takes the active list's total speed once a second and shows it as the last point.
void TestGrafica::fedBySpeed()
{
    QTemporaryDir dir;
    Settings settings;
    FakeDesktop desktop;
    RecordingHistory history;
    ActiveList list(settings, desktop, history, ProgramFolder(dir.path()),
                    [](int) { return std::make_unique<RowState>(); });
    StatsWindow window(list);
    window.resize(600, 300);
    window.show();
    QCOMPARE(window.objectName(), QStringLiteral("estadisticas"));
    QCOMPARE(window.windowTitle(), QStringLiteral("Estadísticas"));
    Grafica *graph = window.findChild<Grafica *>("Grafica");
    QVERIFY(graph && graph->size() == window.size());
    const QList<QLabel *> labels = graph->findChildren<QLabel *>("texto");
    QCOMPARE(labels.size(), 9);
    QCOMPARE(labels.last()->text(), QStringLiteral("0 Kb/seg"));

    list.updateTick();
    Q_EMIT list.totalSpeed(70);
    QCOMPARE(graph->Max(), 90);
    QCOMPARE(labels.last()->text(), QStringLiteral("70 Kb/seg"));
    QCOMPARE(labels[7]->text(), QStringLiteral("0 Kb/seg"));
    const QList<QWidget *> points = graph->findChildren<QWidget *>("punto");
    const QPointF last = graph->model().pointAt(8, graph->width() * 15.0, graph->height() * 15.0);
    QCOMPARE(points.last()->pos(), QPoint(qRound(last.x() / 15), qRound(last.y() / 15)));

    // Resized, the points move with it.
    window.resize(300, 200);
    const QPointF moved = graph->model().pointAt(8, 300 * 15.0, 200 * 15.0);
    QCOMPARE(points.last()->pos(), QPoint(qRound(moved.x() / 15), qRound(moved.y() / 15)));
}

QTEST_MAIN(TestGrafica)
#include "tst_grafica.moc"
