#pragma once

#include <QLineEdit>

namespace varo::ui {

/// A read-only line that shows a result and how far it can be trusted. A text that is wider than
/// the box ends in an ellipsis; the tool tip holds it whole. text() is always the result alone.
class ResultBox : public QLineEdit {
    Q_OBJECT

  public:
    enum class State {
        Normal,
        Stale,     ///< grey: belongs to earlier input
        Error,     ///< red, with an icon: a message in place of a result
        Doubtful,  ///< with an icon: computed from input that may be wrong
    };

    explicit ResultBox(QWidget* parent = nullptr);

    /// Shows `text` from its beginning. `reason` says why the state is not Normal; it stands in
    /// the tool tip above the text, and is what assistive technology reads as the description.
    void setResult(const QString& text, State state = State::Normal, const QString& reason = {});

    /// Changes the state of the text that is shown.
    void setState(State state, const QString& reason = {});

    State state() const { return state_; }

  protected:
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void chooseColors();
    void fitIcon();
    QRect textArea() const;
    void paintEllipsis(QPainter& painter, bool atEnd) const;

    State state_ = State::Normal;
    bool choosesColors_ = false;
};

}  // namespace varo::ui
