#include "listrecord.h"

#include "textfile.h"
#include "urls.h"

void writeRecord(TextFileWriter &writer, const ListRecord &record, ListKind kind)
{
    writer.line(record.Data);
    writer.line(record.path);
    writer.number(record.total);
    writer.number(record.bytes);
    writer.number(record.tiempo);
    writer.boolean(record.allowredo);
    // The password is kept in plain text, and only when the person asked for it.
    writer.line(record.rememb ? record.usernm : QString());
    writer.line(record.rememb ? record.passw : QString());
    writer.boolean(record.rememb);
    if (kind == ListKind::Inactive)
        writer.boolean(record.locked);
}

ListRecord readRecord(TextFileReader &reader, ListKind kind)
{
    ListRecord record;
    record.Data = reader.readLine();
    record.path = reader.readLine();
    // The rest are fields, so a name or password holding a comma or quotes is cut when read.
    record.total = leadingNumber(reader.readField());
    record.bytes = leadingNumber(reader.readField());
    record.tiempo = leadingNumber(reader.readField());
    record.allowredo = toBoolean(reader.readField());
    record.usernm = reader.readField();
    record.passw = reader.readField();
    record.rememb = toBoolean(reader.readField());
    if (kind == ListKind::Inactive)
        record.locked = toBoolean(reader.readField());
    return record;
}

ListRecord withLoginApart(ListRecord record)
{
    const AddressLogin login = SplitLogin(record.Data);
    if (login.address == record.Data)
        return record;
    record.Data = login.address;
    record.usernm = login.user;
    record.passw = login.password;
    record.rememb = true;
    return record;
}
