#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace varo::data {

/// Whole numbers as a JSON array, for a statement that reads them with json_each(?).
template <class Number>
QString jsonArray(const QList<Number>& numbers) {
    QStringList texts;
    for (const Number number : numbers) {
        texts.append(QString::number(number));
    }
    return u'[' + texts.join(u',') + u']';
}

}  // namespace varo::data
