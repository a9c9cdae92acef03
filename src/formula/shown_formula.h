#pragma once

#include "library/current_library.h"

#include <optional>

namespace varo {

/// Which formula the panel shows, and so where what is typed into it belongs.
class ShownFormula {
  public:
    /// `library` must outlive this.
    explicit ShownFormula(const CurrentLibrary& library) : library_(library) {}

    /// Formula `id` of the current library is shown.
    void set(qint32 id) {
        id_ = id;
        libraryNumber_ = library_.number();
    }

    /// No formula is shown.
    void clear() { id_.reset(); }

    /// Identifier of the shown formula. None while none is shown, and while the library that it
    /// belongs to is not the current one: nothing may be stored then.
    std::optional<qint32> id() const {
        return library_.number() == libraryNumber_ ? id_ : std::nullopt;
    }

  private:
    const CurrentLibrary& library_;
    std::optional<qint32> id_;
    int libraryNumber_ = 0;
};

}  // namespace varo
