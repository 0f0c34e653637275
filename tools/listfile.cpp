#include "listfile.h"

#include "failure.h"
#include "textfile.h"

ListFile readListFile(const QByteArray &content)
{
    ListFile list;
    TextFileReader reader(content);
    try {
        reader.readField();
        list.url = reader.readField();
        while (!reader.atEnd()) {
            reader.readField();
            if (reader.atEnd())
                break;
            list.names.append(reader.readField());
        }
    } catch (const Failure &failure) {
        list.failure = failure.description();
    }
    return list;
}
