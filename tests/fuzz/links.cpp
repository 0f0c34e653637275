// The link grabber's harvest of a page: the addresses after "a href=" and "img src=".
#include "fuzzing.h"
#include "linkextraction.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString page = QString::fromUtf8(inputBytes(data, size));
    const QString base = GetMainWeb(QStringLiteral("http://servidor/carpeta/pagina.html"));
    for (const QString &pattern : {QStringLiteral("a href="), QStringLiteral("img src=")}) {
        const LinkList links = extractLinks(page, pattern, base);
        require(links.addresses.size() <= page.count(pattern), "at most one address per pattern");
        for (const QString &address : links.addresses) {
            require(address.startsWith(QLatin1String("http://")) ||
                        address.startsWith(QLatin1String("https://")) ||
                        address.startsWith(QLatin1String("ftp://")),
                    "every address is complete");
            SearchExtension(address, {QStringLiteral("zip"), QString()});
        }
    }
    return 0;
}
