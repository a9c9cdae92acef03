// Takes the bytes that libFuzzer generates as edits of an Access file, and reads its tables with
// their indexes, or writes rows, or opens it beside a journal.

#include "access_mutator.h"
#include "access_work.h"
#include "platform/data/access/catalog.h"
#include "platform/data/access/reading.h"
#include "platform/data/access/whole_file.h"
#include "sandbox.h"

#include <QDir>
#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>

using namespace varo;
using namespace varo::access;
using fuzz::AccessBase;
using fuzz::AccessEdit;
using fuzz::AccessInput;
using fuzz::AccessPlace;
using fuzz::AccessTask;
using fuzz::require;

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* bytes, std::size_t size, std::size_t most);

namespace {

const fuzz::Sandbox& sandbox() {
    static const fuzz::Sandbox instance;
    return instance;
}

const std::vector<AccessBase>& bases() {
    static const std::vector<AccessBase> all =
        fuzz::makeAccessBases(QString::fromStdString(sandbox().path("")));
    return all;
}

/// The file of a base, edited; it becomes the base again with the end of this.
class EditedFile {
  public:
    EditedFile(const AccessBase& base, const AccessInput& input)
        : base_(base), descriptor_(::open(base.path.toUtf8().constData(), O_RDWR | O_CLOEXEC)) {
        require(descriptor_ >= 0, "a base file can be written to");
        if (input.task == AccessTask::Journal) {
            for (std::size_t i = 0; i < base.committedPages.size(); ++i) {
                if ((input.detail >> i & 1) != 0) {
                    const qsizetype at = base.committedPages[i] * base.pageSize();
                    write(at, base.committed.mid(at, base.pageSize()).toStdString());
                }
            }
        }
        for (const AccessEdit& edit : input.edits) {
            if (edit.place == AccessPlace::Cut) {
                require(::ftruncate(descriptor_, base.placeOf(input, edit)) == 0, "a file is cut");
                isWhole_ = false;
            } else if (edit.place != AccessPlace::Journal) {
                write(base.placeOf(input, edit), edit.bytes);
            }
        }
    }
    ~EditedFile() {
        if (!isWhole_) {
            write(0, base_.content.toStdString());
        }
        for (const auto& [at, length] : edited_) {
            write(at, base_.content.mid(at, length).toStdString(), false);
        }
        require(::ftruncate(descriptor_, base_.content.size()) == 0, "a file is restored");
        ::close(descriptor_);
        QFile::remove(Journal::pathOf(base_.path));
    }
    Q_DISABLE_COPY_MOVE(EditedFile)

    /// Anything of the file may have changed.
    void markWritten() { isWhole_ = false; }

  private:
    void write(qsizetype at, const std::string& bytes, bool isEdit = true) {
        require(::pwrite(descriptor_, bytes.data(), bytes.size(), at) == std::ssize(bytes),
                "the sandbox can be written to");
        if (isEdit) {
            edited_.emplace_back(at, bytes.size());
        }
    }

    const AccessBase& base_;
    int descriptor_;
    bool isWhole_ = true;
    std::vector<std::pair<qsizetype, qsizetype>> edited_;
};

void readTables(PageFile& file, std::uint8_t detail) {
    for (const CatalogEntry& entry : userTables(file)) {
        fuzz::succeeds([&] { fuzz::readTableAt(file, entry.page, detail); });
    }
}

void check(const AccessBase& base, const AccessInput& input, std::string_view source) {
    EditedFile edited(base, input);
    std::optional<Header> header;
    fuzz::succeeds([&] { header = headerOf(base.path); });
    if (!header || header->isEncoded || header->hasPassword) {
        return;
    }
    if (input.task == AccessTask::Journal) {
        edited.markWritten();
        fuzz::checkJournal(base, input, *header);
    } else if (input.task == AccessTask::Write) {
        if (fuzz::checkWriting(base, input, *header, source)) {
            edited.markWritten();
        }
    } else {
        PageFile file(base.path, *header, data::Access::Read);
        fuzz::succeeds([&] {
            const Reading reading(file);
            input.task == AccessTask::Table
                ? fuzz::readTableAt(file, base.table(input).page, input.detail)
                : readTables(file, input.detail);
        });
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    bases();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string_view source = fuzz::asText(bytes, size);
    const AccessInput input(source);
    // What reads or writes whole files works on one that is small.
    const bool isWhole = input.task == AccessTask::Journal ||
                         (input.task == AccessTask::Write && fuzz::commits(input));
    const std::size_t choice = isWhole ? fuzz::kSmallAccessBases : bases().size();
    const AccessBase& base = bases()[input.base % choice];
    check(base, input, source);
    require(QDir(QFileInfo(base.path).path()).entryList(QDir::Files).size() == 1,
            "no file appears");
    sandbox().requireNothingOutside();
    return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* bytes, std::size_t size,
                                               std::size_t most, unsigned seed) {
    Chance chance(std::to_string(seed));
    if (chance.below(8) == 0) {
        return LLVMFuzzerMutate(bytes, size, most);
    }
    AccessInput input(fuzz::asText(bytes, size));
    fuzz::changeAccess(input, chance, bases());
    const std::string changed = input.bytes();
    if (changed.size() > most) {
        return size;
    }
    std::copy(changed.begin(), changed.end(), bytes);
    return changed.size();
}
