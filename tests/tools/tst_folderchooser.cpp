#include "fakedesktop.h"
#include "folderwindow.h"
#include "qtdesktop.h"

#include <QApplication>
#include <QDir>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

class TestFolderChooser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Made in the chosen folder "a", which holds "b"; a message follows "Error al crear la
    // carpeta: ".
    void newfolder_data()
    {
        QTest::addColumn<std::optional<QString>>("answer");
        QTest::addColumn<QString>("made");
        QTest::addColumn<QString>("message");
        const auto row = [](const char *name, std::optional<QString> answer, const QString &made,
                            const QString &message = {}) {
            QTest::newRow(name) << answer << made << message;
        };
        row("in the chosen folder", "nueva", "a/nueva");
        row("cancelled", std::nullopt, "");
        row("already there", "b", "", "File exists");
        row("name with a separator", "b/c", "", "el nombre no puede contener «/»");
    }
    void newfolder()
    {
        QFETCH(std::optional<QString>, answer);
        QFETCH(QString, made);
        QFETCH(QString, message);
        QTemporaryDir root;
        QVERIFY(QDir(root.path()).mkpath("a/b"));
        FakeDesktop desktop;
        desktop.inputAnswers = {answer};
        FolderChooser chooser(desktop, [] { return false; });
        chooser.setPath(root.filePath("a"));

        QCOMPARE(chooser.newfolder(), made.isEmpty() ? QString() : root.filePath(made));
        QStringList calls{"inputBox|Escriba el nombre de la nueva carpeta||Nueva Carpeta"};
        if (!message.isEmpty())
            calls << "messageBox|Critical|Error al crear la carpeta: " + message;
        QCOMPARE(desktop.calls, calls);
        QCOMPARE(QDir(root.filePath("a")).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
                 made.isEmpty() ? QStringList{"b"} : QStringList({"b", "nueva"}));
    }

    // One window for every choice, through the program's desktop. The close box and Escape are
    // refused while the program runs; "Aceptar" hides it and the caller reads the path. At the
    // program's end its close box works, and the choice counts as cancelled.
    void closing()
    {
        QTemporaryDir root;
        QtDesktop desktop{ProgramFolder(root.path())};
        bool ending = false;
        desktop.setGetunload([&] { return ending; });
        QList<QWidget *> seen;
        const auto choose = [&](const QString &folder) {
            QTimer::singleShot(0, [&] {
                auto *window = qobject_cast<FolderWindow *>(QApplication::activeModalWidget());
                seen.append(window);
                if (ending) {
                    window->close();
                    return;
                }
                QVERIFY(!window->close());
                QTest::keyClick(window, Qt::Key_Escape);
                QVERIFY(window->isVisible());
                window->findChild<QPushButton *>("acept")->click();
            });
            return desktop.chooseFolder(folder);
        };

        QCOMPARE(choose(root.path()), root.path());
        QCOMPARE(choose(QDir::homePath()), QDir::homePath());
        ending = true;
        QCOMPARE(choose(root.path()), QString());
        QVERIFY(seen[0] && seen[0] == seen[1] && seen[1] == seen[2]);
        QCOMPARE(seen[0]->windowTitle(), "Seleccionar carpeta");
        QPointer<QWidget> window = seen[0];
        desktop.unloadFolder();
        QVERIFY(window.isNull());
    }
};

QTEST_MAIN(TestFolderChooser)
#include "tst_folderchooser.moc"
