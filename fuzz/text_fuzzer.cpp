// Takes the bytes that libFuzzer generates as the text of a library, builds the library, checks it,
// dumps it and builds it again from what was dumped.

#include "library/library_rows.h"
#include "library/library_text.h"
#include "platform/data/error.h"
#include "sandbox.h"
#include "store/library_connection.h"

#include <QBuffer>

#include <optional>

using namespace varo;
using fuzz::require;

namespace {

const fuzz::Sandbox& sandbox() {
    static const fuzz::Sandbox instance;
    return instance;
}

QString pathOf(const char* name) {
    return QString::fromStdString(sandbox().path(name));
}

/// True when `work` ends without one of the two errors that it may throw, which say something.
template <class Work>
bool succeeds(Work work) {
    try {
        work();
        return true;
    } catch (const TextError& error) {
        require(!error.description().isEmpty(), "a refused text has a reason");
    } catch (const data::Error& error) {
        require(!error.description().isEmpty(), "a refused library has a reason");
    }
    return false;
}

/// The text of a library that has just been built.
std::string dumped(const char* library) {
    QBuffer out;
    out.open(QIODevice::WriteOnly);
    require(dumpLibrary(pathOf(library), out).isEmpty(),
            "nothing is left out of the dump of a library that was built");
    return out.data().toStdString();
}

void check(const char* library) {
    const CheckReport report = checkLibrary(pathOf(library));
    require(report.faults == checkLibrary(pathOf(library)).faults, "checking again finds the same");
    data::Connection connection;
    require(openLibrary(pathOf(""), QString::fromLatin1(library), connection).failure ==
                OpenFailure::None,
            "a library that was built opens");
    require(connection.damages().isEmpty(), "a library that was built is not damaged");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string text(fuzz::asText(bytes, size));
    sandbox().clear();
    sandbox().write("picture.bmp", "BM, as far as its signature tells");
    sandbox().write("text.toml", text);
    fuzz::Files expected = sandbox().files();
    const bool isRead = succeeds([] { readLibraryText(pathOf("text.toml")); });
    const bool isBuilt = succeeds([] { buildLibrary(pathOf("text.toml"), pathOf("a.mdb")); });
    require(isRead || !isBuilt, "a text that is not read is not built");
    if (isBuilt) {
        check("a.mdb");
        const std::string again = dumped("a.mdb");
        sandbox().write("again.toml", again);
        require(succeeds([] { buildLibrary(pathOf("again.toml"), pathOf("b.mdb")); }),
                "what was dumped is built");
        require(dumped("b.mdb") == again, "a dump gives a library with the same dump");
        expected["again.toml"] = again;
        expected["a.mdb"] = sandbox().read("a.mdb");
        expected["b.mdb"] = sandbox().read("b.mdb");
    }
    require(sandbox().files() == expected, "no other file appears or changes");
    sandbox().requireNothingOutside();
    return 0;
}
