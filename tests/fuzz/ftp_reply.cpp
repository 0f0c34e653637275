// Chunks of the FTP control connection, as reads cut them: the reader's reply lines, their codes,
// a SIZE answer, the addresses of 227 and 229 answers, the directory and name of a path.
#include "ftpreply.h"
#include "fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray input = inputBytes(data, size);
    Ftp::ReplyReader reader;
    const qsizetype half = input.size() / 2;
    for (const QByteArrayView chunk :
         {QByteArrayView(input).first(half), QByteArrayView(input).sliced(half)}) {
        for (const QByteArray &line : reader.take(chunk)) {
            require(!line.contains('\n'), "a reply line has no line end in it");
            const int code = Ftp::replyCode(line);
            require(code >= -99 && code <= 999, "a reply code has at most three characters");
            Ftp::sizeOf(line);
            tolerating([&] { Ftp::passiveEndpoint(line); });
            tolerating([&] { Ftp::extendedPassivePort(line); });
            Ftp::announcesInsideAddress(QString::fromLatin1(line), QStringLiteral("203.0.113.9"));
        }
    }
    const QString path = QString::fromUtf8(input);
    require(Ftp::directoryOf(path).startsWith('/'), "a directory starts at the root");
    Ftp::remoteName(path);
    return 0;
}
