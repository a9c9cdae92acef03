#pragma once

#include <QString>

#include <memory>

namespace varo::deploy {

/// A configuration file of sections and keys. Reads UTF-8 (with or without a mark), UTF-16 with a
/// mark, and, when the bytes are none of these, GB18030 or GBK. An end-of-file mark (0x1A) at the
/// end is ignored, and a form feed reads as a blank. A value is read as it stands, with its
/// backslashes, percent signs and semicolons; only the blanks around it and one pair of double
/// quotes around what is left are taken off. Section and key names compare without regard to ASCII
/// letter case; of a key that is there twice the first counts. Writes a new file in UTF-8, another
/// one in the encoding and with the line ends that it had, and keeps the comments, sections and
/// keys that it did not change, in their order. Each operation returns its success and, when it
/// fails, leaves the reason in lastError().
class DeployFileLib {
  public:
    DeployFileLib();
    ~DeployFileLib();

    /// The folder and the name of the file. What was required, read and written before is
    /// forgotten, the last error included.
    void setFolder(const QString& folder);
    void setFileName(const QString& fileName);

    /// Another file of the folder that is read in the place of the file, which save() writes: an
    /// earlier version that was put aside. Ends with the next setFolder() or setFileName(), or with
    /// "".
    void setSource(const QString& fileName);

    /// Reads the file and looks whether it can be used: it is there, is text, and holds every key
    /// that was required. What was written and not saved is forgotten.
    bool check();

    /// The key must be present at the next check(); its value may be empty. Requirements add up.
    bool requireKey(const QString& section, const QString& key);

    /// Reads one key as last checked, or as written since; reads the file first when nothing has
    /// been read yet. `value` is unchanged on failure.
    bool readValue(const QString& section, const QString& key, QString& value);

    /// Empties the section, or makes it, before its keys are written. Comments above keys that are
    /// written again come back with them. A file that exists is read first, to keep the rest of it.
    bool prepareSection(const QString& section);

    /// Sets one key, in memory. Any single line of text reads back unchanged. A file that exists is
    /// read first.
    bool writeValue(const QString& section, const QString& key, const QString& value);

    /// Writes the file; it is replaced as a whole or stays as it was. Fails when a file that exists
    /// cannot be read as text, whose content would be lost.
    bool save();

    /// Why the last operation that failed did so, for the user; "" when none has.
    QString lastError() const;

  private:
    struct Data;
    std::unique_ptr<Data> data_;
};

}  // namespace varo::deploy
