#pragma once

#include "control/configuration.h"
#include "control/tree_rebuild.h"
#include "platform/questions/questions.h"

#include <QPointer>
#include <QStringList>

#include <functional>

class QWidget;

namespace varo {

/// The configured libraries and the command that edits them in the library manager.
class LibraryManagement {
  public:
    /// `window` is what the dialog opens over; `given` answers what the dialog asks, without one
    /// the user does. Everything handed in must outlive this.
    LibraryManagement(QWidget& window, colFormulaDB& libraries, TreeRebuild& rebuild,
                      Questions* given, Questions& questions);

    /// Reads the libraries from the configuration file in `folder`, in the place of those that
    /// there are. On failure there are none, and `errorText` says why; they can be managed then,
    /// beginning with those that the file holds complete.
    bool read(const QString& folder, QString& errorText);

    /// There are no libraries, and no folder that they could be added in.
    void forget();

    /// Whether there is a configuration file that libraries can be written to.
    bool canManage() const { return Configuration::exists(folder_); }

    bool isOpen() const { return isOpen_; }

    /// What became of manage().
    enum class Outcome {
        Unchanged,   ///< the user cancelled, or the old libraries stand
        AllRead,     ///< the tree shows the new libraries
        SomeUnread,  ///< the same, with one or more that cannot be read
        Gone,        ///< the configuration folder has gone, and the libraries with it
    };

    /// Opens the library manager, which adds `files` first, and applies what the user wants; what
    /// fails is told. Nothing happens while it is open already, or when no libraries have been
    /// read. Returns without touching this when it is destroyed meanwhile.
    Outcome manage(const QStringList& files = {});

  private:
    Outcome apply(const QString& folder, const std::function<void()>& replace);

    QWidget& window_;
    colFormulaDB& libraries_;
    TreeRebuild& rebuild_;
    Questions* given_;
    Questions& questions_;
    Configuration configuration_;
    QString folder_;
    bool readFailed_ = false;
    bool isOpen_ = false;
};

}  // namespace varo
