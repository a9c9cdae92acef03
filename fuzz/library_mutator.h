#pragma once

#include "chance.h"
#include "library_input.h"

namespace varo::fuzz {

/// Changes one thing in a library and leaves the rest valid: a page, the schema, the values of a
/// column, or what lies beside it. A journal may name the file `victim`.
void changeLibrary(LibraryInput& input, Chance& chance, const std::string& victim);

/// A journal that has yet to be rolled back: it holds every page of `library` as it is. With a
/// `super` it names that file as the journal of a transaction over several databases.
std::string hotJournal(const std::string& library, const std::string& super = {});

}  // namespace varo::fuzz
