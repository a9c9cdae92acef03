#include "library/current_library.h"

#include "library/library_list.h"
#include "platform/data/lock_check.h"
#include "store/keys.h"

namespace varo {

CurrentLibrary::CurrentLibrary(const colFormulaDB& libraries, Questions& questions)
    : libraries_(libraries), funcs_(questions) {}

const clsFormulaDB* CurrentLibrary::configured(int number) const {
    const QString key = libraryKey(number);
    return libraries_.contains(key) ? &libraries_.Item(key) : nullptr;
}

bool CurrentLibrary::openAtOnce(int number) {
    const clsFormulaDB* library = configured(number);
    if (library != nullptr && data::isLocked(pathOf(*library))) {
        close();
        openResult_ = {OpenFailure::Locked, data::Error::Cause::Locked, {}};
        return false;
    }
    return open(number);
}

bool CurrentLibrary::open(int number) {
    const clsFormulaDB* library = configured(number);
    openResult_ = {};
    if (library == nullptr) {
        close();
        return false;
    }
    const bool isSameFile = isOpen() && folder_ == library->FormulaDBPath &&
                            name_ == library->FormulaDBName && isInPlace();
    if (!isSameFile) {
        close();
        openResult_ = openLibrary(library->FormulaDBPath, library->FormulaDBName, connection_);
        if (openResult_.failure != OpenFailure::None) {
            return false;
        }
        connection_.setReplacedNotice(tellReplaced_);
        folder_ = library->FormulaDBPath;
        name_ = library->FormulaDBName;
    }
    number_ = number;
    return true;
}

void CurrentLibrary::close() {
    connection_.close();
    variables_.Clear();
}

}  // namespace varo
