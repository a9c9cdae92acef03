#include "library/current_library.h"

#include "store/keys.h"

namespace varo {

CurrentLibrary::CurrentLibrary(const colFormulaDB& libraries, Questions& questions)
    : libraries_(libraries), funcs_(questions) {}

bool CurrentLibrary::open(int number) {
    const QString key = libraryKey(number);
    openResult_ = {};
    if (!libraries_.contains(key)) {
        close();
        return false;
    }
    const clsFormulaDB& library = libraries_.Item(key);
    const bool isSameFile = isOpen() && folder_ == library.FormulaDBPath &&
                            name_ == library.FormulaDBName && isInPlace();
    if (!isSameFile) {
        close();
        openResult_ = openLibrary(library.FormulaDBPath, library.FormulaDBName, connection_);
        if (openResult_.failure != OpenFailure::None) {
            return false;
        }
        connection_.setReplacedNotice(tellReplaced_);
        folder_ = library.FormulaDBPath;
        name_ = library.FormulaDBName;
    }
    number_ = number;
    return true;
}

void CurrentLibrary::close() {
    connection_.close();
    variables_.Clear();
}

}  // namespace varo
