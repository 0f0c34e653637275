#include "ftplogindialog.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

class TestFtpLoginDialog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void designValues();
    void focusSelectsAll();
};

void TestFtpLoginDialog::designValues()
{
    FtpLoginDialog dialog;
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Usuario/Contraseña"));
    const FtpCredentials fresh = dialog.credentials();
    QCOMPARE(fresh.usernm, QStringLiteral("anonymous"));
    QCOMPARE(fresh.passw, QStringLiteral("freepwd"));
    QVERIFY(!fresh.rememb);
    QCOMPARE(dialog.findChild<QCheckBox *>("remember")->text(),
             QStringLiteral("Recordar nombre de usuario y contraseña al reconectar"));

    dialog.setCredentials({"ana", "secreta", true});
    dialog.show();
    QTest::mouseClick(dialog.findChild<QPushButton *>("aceptar"), Qt::LeftButton);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.credentials().passw, QStringLiteral("secreta"));
    QVERIFY(dialog.credentials().rememb);
}

void TestFtpLoginDialog::focusSelectsAll()
{
    FtpLoginDialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    for (const char *name : {"password", "username"}) {
        auto *edit = dialog.findChild<QLineEdit *>(name);
        edit->deselect();
        QTest::mouseClick(edit, Qt::LeftButton);
        QTRY_COMPARE(edit->selectedText(), edit->text());
    }
}

QTEST_MAIN(TestFtpLoginDialog)
#include "tst_ftplogindialog.moc"
