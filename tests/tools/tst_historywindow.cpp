#include "historyfixture.h"
#include "historyview.h"
#include "historywindow.h"

#include <QApplication>
#include <QClipboard>
#include <QPlainTextEdit>
#include <QRandomGenerator>
#include <QTest>

class TestHistoryWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsTheFileInColour();
    void followsTheLog_data();
    void followsTheLog();
    void personSelectsAndCopies();
    void resizeRule_data();
    void resizeRule();
};

void TestHistoryWindow::showsTheFileInColour()
{
    HistoryFixture f;
    QFile foreign(qEnvironmentVariable("CORVANE_SOURCE_DIR") + "/tests/tools/data/otro-editor.rtf");
    QVERIFY(foreign.copy(f.settings.histrut));
    f.log.open();
    HistoryWindow window(f.log);
    QCOMPARE(window.objectName(), "historial");
    QCOMPARE(window.windowTitle(), "Historial");
    auto *texto = window.findChild<QPlainTextEdit *>("texto");
    QVERIFY(texto && texto->isReadOnly());
    QCOMPARE(describe(*texto->document()),
             "255:Iniciado a las 10:00:00 el 05/01/2024\r\n"
             " | 0:Configuración cambiada a las 10:00:05\r\n"
             " | 47872:Se continúa la descarga de C:\\descargas\\año.zip"
             " | 16711680: a las 10:00:06\r\n"
             " | 0:Precio:\t5 € y “cita”\r\n"
             " | 16711680:enlace"
             " | 0:\r\n"
             " | 255:fin {llaves}\r\n" +
                 StartLine);
}

void TestHistoryWindow::followsTheLog_data()
{
    QTest::addColumn<quint32>("seed");
    QTest::addColumn<int>("histsize");
    QTest::newRow("trimmed often") << 7u << 1;
    QTest::newRow("trimmed now and then") << 8u << 4;
    QTest::newRow("histsize 0") << 9u << 0;
}

void TestHistoryWindow::followsTheLog()
{
    // Appends, trims and clears in any order: the window shows exactly the log.
    QFETCH(quint32, seed);
    QFETCH(int, histsize);
    HistoryFixture f;
    f.settings.histsize = histsize;
    HistoryWindow window(f.log);
    const QTextDocument &shown = *window.findChild<QPlainTextEdit *>("texto")->document();
    QRandomGenerator random(seed);
    const QStringList words{"Descargando", "ñ", "{x}", "\t", "€", "\r", "\n", "\r\n", " ", "99"};
    const QList<quint32> colours{HistoryColour::Red, HistoryColour::Black, HistoryColour::Green};
    for (int i = 0; i < 300; ++i) {
        if (random.bounded(60) == 0) {
            f.log.clear();
        } else {
            QString line = random.bounded(3) ? QStringLiteral("\r\n") : QString();
            for (int w = int(random.bounded(15)); w >= 0; --w)
                line += words[random.bounded(words.size())];
            f.log.append(line, colours[random.bounded(colours.size())]);
        }
        QCOMPARE(describe(shown), describe(f.log.document().runs));
    }
}

void TestHistoryWindow::personSelectsAndCopies()
{
    HistoryFixture f;
    f.log.append("\r\nDescargando http://h/a.zip a /d/a.zip", HistoryColour::Black);
    HistoryWindow window(f.log);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    auto *texto = window.findChild<QPlainTextEdit *>("texto");
    texto->setFocus();
    // Typing changes nothing: the box is the program's to write.
    QTest::keyClicks(texto, "hola");
    QTest::keyClick(texto, Qt::Key_Backspace);
    QTest::keyClick(texto, Qt::Key_Delete);
    QCOMPARE(describe(*texto->document()), describe(f.log.document().runs));
    QTest::keyClick(texto, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(texto, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QApplication::clipboard()->text(),
             StartLine + "\nDescargando http://h/a.zip a /d/a.zip");
}

void TestHistoryWindow::resizeRule_data()
{
    QTest::addColumn<QSize>("inner");
    QTest::addColumn<QRect>("texto");
    // 120 twips are 8 pixels, 500 twips 33; the box is 4 pixels in from the left and top.
    QTest::newRow("usual") << QSize(640, 360) << QRect(4, 4, 632, 327);
    QTest::newRow("wide") << QSize(1200, 200) << QRect(4, 4, 1192, 167);
    QTest::newRow("smaller than the margins") << QSize(5, 20) << QRect(4, 4, 0, 0);
}

void TestHistoryWindow::resizeRule()
{
    QFETCH(QSize, inner);
    HistoryFixture f;
    HistoryWindow window(f.log);
    window.show();
    window.resize(inner);
    QCOMPARE(window.size(), inner);
    QTEST(window.findChild<QPlainTextEdit *>("texto")->geometry(), "texto");
}

QTEST_MAIN(TestHistoryWindow)
#include "tst_historywindow.moc"
