#pragma once

#include <QString>
#include <stdexcept>

// A run-time failure inside a routine. The routine that started the operation catches it and
// reports `description()` the way that operation reports its failures.
class Failure : public std::runtime_error
{
public:
    explicit Failure(const QString &description)
        : std::runtime_error(description.toStdString()), m_description(description)
    {}
    QString description() const { return m_description; }

private:
    QString m_description;
};
