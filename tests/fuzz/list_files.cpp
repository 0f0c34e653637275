// The list files "activas.dwn" and "inactivas.dwn": read as the lists load them, written as they
// save them.
#include "fuzzing.h"
#include "listrecord.h"
#include "textfile.h"

#include <QList>
#include <algorithm>

namespace {

// The records before the end of the file or the first fault, as a list loads them.
QList<ListRecord> readAll(const QByteArray &bytes, ListKind kind)
{
    TextFileReader reader(bytes);
    QList<ListRecord> records;
    tolerating([&] {
        while (!reader.atEnd())
            records.append(readRecord(reader, kind));
    });
    return records;
}

QByteArray written(const QList<ListRecord> &records, ListKind kind)
{
    TextFileWriter writer;
    for (const ListRecord &record : records)
        writeRecord(writer, record, kind);
    return writer.bytes();
}

// A remembered name or password with a comma, a quote or blanks around it is cut when read back,
// as the file format has always done.
bool survives(const ListRecord &record)
{
    for (const QString &text : {record.usernm, record.passw}) {
        if (record.rememb && (text.contains(u',') || text.contains(u'"') || text.trimmed() != text))
            return false;
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    for (const ListKind kind : {ListKind::Active, ListKind::Inactive}) {
        QList<ListRecord> records = readAll(inputBytes(data, size), kind);
        const auto lost = std::find_if_not(records.begin(), records.end(), survives);
        records.erase(lost, records.end());
        // A list saved and loaded again is saved the same: nothing is lost or changed.
        const QByteArray saved = written(records, kind);
        const QList<ListRecord> loaded = readAll(saved, kind);
        require(loaded.size() == records.size(), "every saved download loads again");
        require(written(loaded, kind) == saved, "a loaded list saves the same");
    }
    return 0;
}
