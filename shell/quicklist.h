#pragma once

#include <QObject>
#include <QStringList>

// The addresses offered by the quick-add box, kept in "quick.lst" one per line. New addresses
// go in at an insertion point that starts at the top and moves down one place per insertion, so
// this run's addresses come first in the order they were added; one already listed is not
// added again.
class QuickList final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QuickList)

public:
    explicit QuickList(QObject *parent = nullptr) : QObject(parent) {}

    const QStringList &items() const { return m_items; }
    // Appends every line of the file (blank lines too); throws Failure when it cannot be read.
    void load(const QString &path);
    // Replaces the file, an empty one when there are no items; throws Failure.
    void save(const QString &path) const;
    void record(const QString &url);

Q_SIGNALS:
    void changed();

private:
    QStringList m_items;
    int m_insertAt = 0;
};
