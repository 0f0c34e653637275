#pragma once

#include <QJsonObject>
#include <QString>
#include <variant>

// What the browser extension hands over: a download, with the page it was found on and the
// cookies the browser holds for its address, or a page for the link grabber.
struct BrowserLink
{
    enum class Kind
    {
        Add,
        Grab
    };

    Kind kind = Kind::Add;
    QString url;
    QString referrer; // empty when the browser gave none
    QString cookie;   // the value of a Cookie header, empty without cookies

    // As the extension's message says it: {"action": "add" | "grab", "url", "referrer",
    // "cookie"}, the last two only when they are not empty.
    QJsonObject toJson() const;
    // The link a message asks for, or why it is refused, in Spanish. Every text it takes could
    // end up in a request or a list file, so none may hold a line break or another control
    // character.
    static std::variant<BrowserLink, QString> fromJson(const QJsonObject &message);

    friend bool operator==(const BrowserLink &, const BrowserLink &) = default;
};
