#include "tarta.h"
#include "viewfixture.h"

#include <QCheckBox>
#include <QLineEdit>

namespace {

QString field(const DetailWindow &window, const char *name)
{
    return window.findChild<QLineEdit *>(name)->text();
}

} // namespace

class TestDetailWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void texts_data();
    void texts();
    void follows();
};

void TestDetailWindow::texts_data()
{
    QTest::addColumn<QString>("state");
    QTest::addColumn<QString>("estado");
    QTest::addColumn<QString>("actsize");
    QTest::addColumn<QString>("downloaded");
    QTest::addColumn<double>("done");
    QTest::newRow("connecting") << "connecting"
                                << "Conectando..."
                                << "1024 bytes"
                                << "Descargados 1024 bytes de 2 Kb" << 0.5;
    QTest::newRow("running") << "running"
                             << "Descargando"
                             << "1024 bytes"
                             << "Descargados 1024 bytes de 2 Kb" << 0.5;
    QTest::newRow("finished") << "finished"
                              << "Finalizado"
                              << "2 Kb"
                              << "Descargados 2 Kb de 2 Kb" << 1.0;
    QTest::newRow("retries exhausted") << "exhausted"
                                       << "Se han agotado los reintentos"
                                       << "1024 bytes"
                                       << "Descargados 1024 bytes de 2 Kb" << 0.5;
    // The inactive list keeps the position of the next byte as its byte count.
    QTest::newRow("paused") << "paused"
                            << "Pausado"
                            << "1 Kb"
                            << "Descargados 1 Kb de 2 Kb" << 1025.0 / 2048;
}

// A double click on a row opens the one detail window for that download.
void TestDetailWindow::texts()
{
    QFETCH(QString, state);
    QFETCH(double, done);
    ViewFixture f;
    const QString url = "http://127.0.0.1:9/dir/uno.zip";
    download *row = nullptr;
    if (state == "paused") {
        f.inactive.addnew(url, f.path("uno.zip"), 2048, 1025, true, 3725, false, "", "", false,
                          false);
        row = f.inactivas.rowAt(1);
    } else {
        f.active.addnew(url, f.path("uno.zip"), 2048, 1025, true, 3725, false, "", "", false);
        row = f.activas.rowAt(1);
        if (state != "connecting")
            row->setReconectando(false);
        if (state == "exhausted")
            row->setRedoend(true);
        if (state == "finished") {
            f.active.slotAt(1).bytes = 2049;
            row->DownloadEnd();
            row->setFinalizado(true);
        }
    }
    QTest::mouseDClick(row->findChild<QLabel *>("urll"), Qt::LeftButton);

    QVERIFY(f.detail.isVisible());
    QCOMPARE(f.detail.objectName(), QStringLiteral("detallado"));
    QCOMPARE(f.detail.windowTitle(), "Información de " + f.path("uno.zip"));
    QCOMPARE(field(f.detail, "url"), url);
    QCOMPARE(field(f.detail, "destino"), f.path("uno.zip"));
    QCOMPARE(field(f.detail, "totalsize"), QStringLiteral("2 Kb"));
    QTEST(field(f.detail, "actsize"), "actsize");
    QTEST(f.detail.findChild<QLabel *>("downloaded")->text(), "downloaded");
    QCOMPARE(field(f.detail, "tiempo"), QStringLiteral("1:02:05"));
    QTEST(field(f.detail, "estado"), "estado");
    QVERIFY(f.detail.findChild<QCheckBox *>("allowredo")->isChecked());
    QCOMPARE(f.detail.findChild<Tarta *>("tarta")->proportion(), done);
}

// The window keeps up with its download, and lets go of it once it has gone.
void TestDetailWindow::follows()
{
    ViewFixture f;
    f.active.addnew("http://127.0.0.1:9/a", f.path("a"), 0, 0, false, 0, false, "", "", false);
    ViewFixture::clickRow(f.activas.rowAt(1));
    f.activas.menu()->actions().last()->trigger(); // "propiedades"
    QCOMPARE(field(f.detail, "totalsize"), QStringLiteral("*"));

    f.active.slotAt(1).total = 4096;
    f.active.slotAt(1).bytes = 4097;
    f.active.rowAt(1)->DownloadEnd();
    f.active.rowAt(1)->setFinalizado(true);
    f.detail.model().refresh();
    QCOMPARE(field(f.detail, "estado"), QStringLiteral("Finalizado"));
    QCOMPARE(field(f.detail, "totalsize"), QStringLiteral("4 Kb"));

    // Removed, and another download takes the slot: the window keeps the last texts.
    f.active.delend();
    f.active.addnew("http://127.0.0.1:9/b", f.path("b"), 0, 0, false, 0, false, "", "", false);
    f.detail.model().refresh();
    QVERIFY(!f.detail.model().following());
    QCOMPARE(field(f.detail, "destino"), f.path("a"));

    // Asked again, it is filled again.
    QTest::mouseDClick(f.activas.rowAt(1)->findChild<QLabel *>("filename"), Qt::LeftButton);
    QCOMPARE(field(f.detail, "destino"), f.path("b"));
    QCOMPARE(field(f.detail, "estado"), QStringLiteral("Conectando..."));
}

QTEST_MAIN(TestDetailWindow)
#include "tst_detailwindow.moc"
