// Takes the bytes that libFuzzer generates as a configuration file, reads it, writes keys and saves
// it. What is written and required follows from the bytes, too.

#include "chance.h"
#include "platform/deploy/deploy_file.h"
#include "sandbox.h"

#include <QStringList>

#include <array>
#include <optional>
#include <vector>

using namespace varo;
using fuzz::require;

namespace {

struct Key {
    QString section;
    QString key;

    bool isSame(const Key& other) const {
        return section.compare(other.section, Qt::CaseInsensitive) == 0 &&
               key.compare(other.key, Qt::CaseInsensitive) == 0;
    }
};

const fuzz::Sandbox& sandbox() {
    static const fuzz::Sandbox instance;
    return instance;
}

/// The keys that the seeds and the dictionary have, and any that the text seems to have.
std::vector<Key> keysIn(const QString& text) {
    std::vector<Key> keys{
        {"Access", "NodeCount"}, {"Access", "RootNodeText1"}, {"", "k"}, {"s", "k"}};
    QString section;
    for (const QString& line : text.split(u'\n')) {
        const QString trimmed = line.trimmed();
        const qsizetype equals = trimmed.indexOf(u'=');
        if (trimmed.startsWith(u'[')) {
            section = trimmed.mid(1, trimmed.indexOf(u']') - 1).trimmed();
        } else if (equals > 0 && keys.size() < 10) {
            keys.push_back({section, trimmed.left(equals).trimmed()});
        }
    }
    return keys;
}

/// A configuration file, opened anew.
class Configuration {
  public:
    Configuration() {
        file_.setFolder(QString::fromStdString(sandbox().path("")));
        file_.setFileName(QStringLiteral("VaroPelm.ini"));
    }

    deploy::DeployFileLib& file() { return file_; }

    bool did(bool done) {
        require(done || !file_.lastError().isEmpty(), "a failure has a reason");
        return done;
    }

    std::optional<QString> value(const Key& key) {
        const QString before = QStringLiteral("before");
        QString value = before;
        if (did(file_.readValue(key.section, key.key, value))) {
            return value;
        }
        require(value == before, "a failure leaves the value alone");
        return {};
    }

    std::vector<std::optional<QString>> values(const std::vector<Key>& keys) {
        std::vector<std::optional<QString>> all;
        for (const Key& key : keys) {
            all.push_back(value(key));
        }
        return all;
    }

  private:
    deploy::DeployFileLib file_;
};

QString madeUp(Chance& chance, std::string_view source) {
    QString text = QString::fromUtf8(chance.text(source)).simplified();
    constexpr std::array kAround{"%1",  "\"%1\"", "a\\%1\\", " %1 ",
                                 ";%1", "[%1]",   "%1 = b",  "<<<%1"};
    return QString::fromLatin1(kAround[chance.below(kAround.size())]).arg(text);
}

void checkWriting(const std::vector<Key>& keys, std::string_view source) {
    Chance chance(source);
    const auto before = Configuration().values(keys);
    const std::string oldContent = sandbox().read("VaroPelm.ini");
    Configuration configuration;
    const Key written = keys[chance.below(keys.size())];
    const QString value = madeUp(chance, source);
    const bool emptiesSection = chance.below(4) == 0;
    if (emptiesSection &&
        !configuration.did(configuration.file().prepareSection(written.section))) {
        return;
    }
    if (!configuration.did(configuration.file().writeValue(written.section, written.key, value))) {
        return;
    }
    require(configuration.value(written) == value, "a written value is read at once");
    if (!configuration.did(configuration.file().save())) {
        require(sandbox().read("VaroPelm.ini") == oldContent, "a failed saving changes nothing");
        return;
    }
    Configuration again;
    require(again.did(again.file().check()), "what was saved can be read");
    require(again.value(written) == value, "what was written reads back");
    const auto after = again.values(keys);
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const bool isTouched =
            keys[i].isSame(written) ||
            (emptiesSection && keys[i].section.compare(written.section, Qt::CaseInsensitive) == 0);
        require(isTouched || after[i] == before[i], "what was not touched stays");
    }
    // The first saving may leave more blank lines than the following ones.
    std::string saved;
    for (int time = 0; time < 2; ++time) {
        Configuration next;
        saved = sandbox().read("VaroPelm.ini");
        require(next.did(next.file().writeValue(written.section, written.key, value)) &&
                    next.did(next.file().save()),
                "what was saved can be saved again");
        require(time == 0 || sandbox().read("VaroPelm.ini") == saved,
                "saving the same again changes nothing");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string_view content = fuzz::asText(bytes, size);
    sandbox().clear();
    sandbox().write("VaroPelm.ini", content);
    const std::vector<Key> keys =
        keysIn(QString::fromUtf8(content.data(), static_cast<qsizetype>(content.size())));
    const auto values = Configuration().values(keys);
    require(Configuration().values(keys) == values, "reading again reads the same");
    Chance chance(content);
    const std::size_t required = chance.below(keys.size());
    Configuration configuration;
    configuration.file().requireKey(keys[required].section, keys[required].key);
    require(configuration.did(configuration.file().check()) == values[required].has_value(),
            "a required key is missed exactly when it is not there");
    checkWriting(keys, content);
    require(sandbox().files().size() == 1, "no other file appears");
    sandbox().requireNothingOutside();
    return 0;
}
