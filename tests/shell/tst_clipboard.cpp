#include "mainwindow.h"
#include "program.h"
#include "settingsfixture.h"
#include "xserver.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>

namespace {

// Copies `text` as another program would: xclip owns the clipboard until the next copy, and
// ends with the X server.
bool copy(const XServer &x, const QString &text)
{
    QSignalSpy changed(QGuiApplication::clipboard(), &QClipboard::dataChanged);
    QProcess xclip;
    xclip.setProcessEnvironment(x.environment());
    xclip.setStandardOutputFile(QProcess::nullDevice());
    xclip.setStandardErrorFile(QProcess::nullDevice());
    xclip.start("xclip", {"-selection", "clipboard"});
    xclip.write(text.toUtf8());
    xclip.closeWriteChannel();
    return xclip.waitForFinished(5000) && (changed.count() > 0 || changed.wait(5000));
}

} // namespace

// The program on an X server of the test's own, so that the clipboard is the real one.
class TestClipboard : public QObject
{
    Q_OBJECT

public:
    explicit TestClipboard(const XServer &x) : m_x(x) {}

private Q_SLOTS:
    void offeredOnce();

private:
    const XServer &m_x;
};

void TestClipboard::offeredOnce()
{
    // The link grabber wants PDF files too; the watch is off, as at first. Then the watch is
    // switched on in the settings window, and one copy follows another: what is offered is in the
    // quick-add box and said in the messages' panel, nothing asked.
    SettingsFixture home;
    QVERIFY(home.saveQuiet());
    home.write("listado.lst", "exe\r\n.pdf\r\n");
    Program program(ProgramFolder(home.dir.path()), {}, home.desktop);
    program.start();
    QTRY_VERIFY(program.mainWindow() && program.mainWindow()->isVisible());
    MainWindow *main = program.mainWindow();
    QComboBox *quickadd = main->quickadd();
    const auto *mensajes = main->findChild<QLabel *>("mensajes");
    const QString first = "http://127.0.0.1:9/a.zip";
    QVERIFY(copy(m_x, first));
    QCOMPARE(quickadd->currentText(), QString());

    auto *cfg = main->findChild<QDialog *>("cfg");
    cfg->findChild<QCheckBox *>("portapapeles")->click();
    cfg->accept();
    // Copied, and offered (empty: nothing).
    const QList<std::pair<QString, QString>> copies{
        {first, first},
        {"  https://127.0.0.1:9/dir/Setup.EXE \n", "https://127.0.0.1:9/dir/Setup.EXE"},
        {first, ""},
        {"http://127.0.0.1:9/pagina.html", ""},
        {"http://127.0.0.1:9/c.zip http://127.0.0.1:9/d.zip", ""},
        {"Bájese http://127.0.0.1:9/g.zip", ""},
    };
    for (const auto &[copied, offered] : copies) {
        quickadd->setEditText(QString());
        QVERIFY2(copy(m_x, copied), qPrintable(copied));
        QCOMPARE(quickadd->currentText(), offered);
        if (!offered.isEmpty())
            QVERIFY2(mensajes->text().contains(offered), qPrintable(mensajes->text()));
    }
    QCOMPARE(home.desktop.calls, QStringList());
    QVERIFY(home.read("preferencias.ini").contains("portapapeles=true"));
    main->close();
}

int main(int argc, char *argv[])
{
    XServer x;
    if (!x.start())
        qFatal("%s", qPrintable(x.error()));
    qputenv("DISPLAY", x.display().toLatin1());
    qputenv("QT_QPA_PLATFORM", "xcb");
    QApplication app(argc, argv);
    TestClipboard test(x);
    return QTest::qExec(&test, argc, argv);
}

#include "tst_clipboard.moc"
