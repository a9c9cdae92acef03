#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace varo {

/// What a modal question offers.
enum class Choice { YesNo, OkCancel };

/// A file that the user has named; it need not exist.
struct ChosenFile {
    QString path;
    int filter = 0;  ///< position of the chosen filter
};

/// A question for a file.
struct FileQuestion {
    enum class Purpose { Open, New };

    QString title;
    QStringList filters;  ///< each a text with the wanted names in parentheses, as "(*.bmp)"
    Purpose purpose = Purpose::Open;
    QString initialName = {};  ///< stands in the field for the name at first
};

/// Every modal question and message goes through this interface, so that a test, or a host without
/// a screen, can answer. The host may go on meanwhile, and turn the control to something else.
class Questions {
  public:
    virtual ~Questions() = default;

    /// Shows `text` with the information icon and an OK button, and waits until it is dismissed.
    virtual void inform(const QString& text) = 0;

    /// Asks `text` and returns true for Yes or OK.
    virtual bool confirm(const QString& text, Choice choice) = 0;

    /// Asks for a file to open, or for the name of a new one; whether a file of that name may be
    /// replaced is not asked. Returns nothing when the user cancels.
    virtual std::optional<ChosenFile> chooseFile(const FileQuestion& question) = 0;
};

}  // namespace varo
