#pragma once

#include "activewindow.h"
#include "detailwindow.h"
#include "enginefixture.h"
#include "inactivewindow.h"

#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QTest>
#include <QToolButton>

// Both list windows over the engine fixture's lists, on screen (offscreen), with their shared
// detail window. The windows go before the lists.
struct ViewFixture : EngineFixture
{
    DetailWindow detail;
    ActiveWindow activas{active, detail};
    InactiveWindow inactivas{inactive, active, detail};

    ViewFixture()
    {
        activas.show();
        inactivas.show();
    }

    // A download that stays in the list without connecting anywhere: complete when `finished`.
    int addActive(const QString &name, bool finished = false, bool allowredo = true)
    {
        write(name, "parte");
        const qint64 total = finished ? 5 : 1000;
        return active.addnew("http://127.0.0.1:9/" + name, path(name), total, finished ? 5 : 6,
                             allowredo, 0, false, "", "", false);
    }

    static QToolButton *button(QWidget *window, const char *key)
    {
        return window->findChild<QToolButton *>(QLatin1String(key));
    }

    static void click(QWidget *window, const char *key)
    {
        QToolButton *found = button(window, key);
        QVERIFY2(found, key);
        QTest::mouseClick(found, Qt::LeftButton);
    }

    static void clickRow(download *row, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mouseClick(row->findChild<QLabel *>("filename"), button);
    }

    // The keys of the toolbar `opciones`, in order; each icon-only button shows an icon and has
    // its tooltip as its accessible name.
    static QStringList toolbarKeys(QWidget *window)
    {
        QStringList keys;
        for (QToolButton *button :
             window->findChild<QWidget *>("opciones")->findChildren<QToolButton *>()) {
            if (!button->defaultAction() || button->objectName().isEmpty())
                continue;
            if (button->accessibleName() == button->toolTip() && !button->icon().isNull())
                keys.append(button->objectName());
        }
        return keys;
    }

    // The enabled commands of a menu, by object name.
    static QStringList enabledItems(const QMenu *menu)
    {
        QStringList names;
        for (const QAction *item : menu->actions()) {
            if (item->isEnabled())
                names.append(item->objectName());
        }
        return names;
    }
};
