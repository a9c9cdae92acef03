#pragma once

#include <QString>

#include <ostream>

/// Shows a text as text in the message of a failed expectation.
inline void PrintTo(const QString& text, std::ostream* stream) {
    *stream << '"' << text.toStdString() << '"';
}
