#pragma once

#include "engine/calc_engine.h"

#include <QString>
#include <QStringList>

namespace varo {

/// What an evaluation gave.
struct Evaluation {
    enum class Kind { Number, Text, Error };

    Kind kind = Kind::Error;
    double number = 0;  ///< of Kind::Number
    QString text;       ///< the text, or what is wrong, for the user
};

/// A formula's text as the calculation engine understands it. It is parsed once for each change;
/// every evaluation uses that parse.
class ParsedFormula {
  public:
    ParsedFormula() = default;
    ParsedFormula(const ParsedFormula&) = delete;
    ParsedFormula& operator=(const ParsedFormula&) = delete;

    /// Parses `text`, which may be incomplete or "".
    void setText(const QString& text);

    const QString& text() const { return text_; }

    /// Names of the variables, in the engine's order and spelling.
    const QStringList& variables() const { return variables_; }

    /// Evaluates the formula; `values` are the texts of the values of variables(), in order.
    Evaluation evaluate(const QStringList& values);

  private:
    QString giveValues(const QStringList& values);
    QString wrongArgument();

    engine::CalcEngine engine_;
    QString text_;
    std::string utf8_;
    QStringList variables_;
    double number_ = 0;  ///< the engine writes a numeric result here
};

}  // namespace varo
