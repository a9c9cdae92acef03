#pragma once

#include <QStringList>
#include <QWidget>

class QListWidget;

namespace varo::host {

/// A list of lines to read, the newest last, with a button that empties it.
class LineList : public QWidget {
    Q_OBJECT

  public:
    explicit LineList(QWidget* parent = nullptr);

    void append(const QString& line);

    QStringList lines() const;

  private:
    QListWidget* list_;
};

}  // namespace varo::host
