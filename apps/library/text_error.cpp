#include "library/text_error.h"

namespace varo {

namespace {

QString placed(const QString& path, Position at, const QString& message) {
    return path + QStringLiteral(":%1:%2: ").arg(at.line).arg(at.column) + message;
}

}  // namespace

TextError::TextError(const QString& path, Position at, const QString& message)
    : std::runtime_error(placed(path, at, message).toStdString()),
      description_(placed(path, at, message)) {}

TextError::TextError(const QString& path, const QString& message)
    : std::runtime_error((path + QStringLiteral(": ") + message).toStdString()),
      description_(path + QStringLiteral(": ") + message) {}

}  // namespace varo
