#pragma once

#include <QBasicTimer>
#include <QByteArray>
#include <QCache>
#include <QDeadlineTimer>
#include <QHash>
#include <QImage>
#include <QObject>
#include <QSet>
#include <QSize>

#include <memory>
#include <optional>
#include <vector>

namespace varo::ui {

/// Where the bytes of pictures come from. It is asked on the interface's thread only, one picture
/// at a time; each call should take a fraction of a display frame.
class PictureBytes {
  public:
    enum class Read { Part, All, Later, None };

    virtual ~PictureBytes() = default;

    /// Appends the next bytes of a picture to `bytes`, which are those read before, at first none.
    /// Returns whether they are all; Later when they cannot be read just then, None when they
    /// cannot be read at all.
    virtual Read readBytes(int picture, QByteArray& bytes) = 0;

    /// The picture that was read last is not wanted any more.
    virtual void endReading() = 0;
};

/// Makes small images of pictures: reads their bytes while the interface is idle, decodes them in
/// other threads, and keeps the images in a cache of 64 MB. What cannot be read just then is tried
/// again, after longer and longer pauses, as long as it is wanted. A picture whose decoding would
/// take more than kDecodingMebibytes is unreadable, and all that are decoded at a time take no more
/// than that. It may be destroyed at any time.
class ThumbnailLoader : public QObject {
    Q_OBJECT

  public:
    explicit ThumbnailLoader(QObject* parent = nullptr);
    ~ThumbnailLoader() override;

    /// Forgets all images. `source` must outlive this or be replaced; without one nothing is read.
    void setSource(PictureBytes* source);

    /// The pictures that are wanted, the most urgent one first, each to fit into a square of `side`
    /// device-independent pixels at so many device pixels to one; a picture is not enlarged. Those
    /// whose images would not fit into the cache are left out. What was wanted before is read no
    /// further.
    void want(std::vector<int> pictures, int side, qreal ratio);

    /// The image of a picture, perhaps made for another size; a null one when there is none yet.
    QImage image(int picture) const {
        const Thumbnail* made = made_.object(picture);
        return made == nullptr ? QImage() : made->image;
    }
    bool isUnreadable(int picture) const { return unreadable_.contains(picture); }

    /// Most bytes of the images that are kept.
    static constexpr qint64 kCacheBytes = 64 * 1024 * 1024;

    /// Most memory, but for the pictures' own bytes, that decoding takes.
    static constexpr int kDecodingMebibytes = 256;

  signals:
    /// The image of a picture has been made, or the picture turned out to be unreadable.
    void loaded(int picture);

  protected:
    void timerEvent(QTimerEvent* event) override;
    bool event(QEvent* event) override;

  private:
    struct Mailbox;
    struct Thumbnail {
        int side;  ///< of the square that it was made for
        qreal ratio;
        QImage image;
    };

    /// When a picture is to be tried again, and the pause before that.
    struct Postponed {
        QDeadlineTimer until;
        int milliseconds;
    };

    bool isWanted(int picture) const;
    std::optional<int> nextPicture();
    void readOn();
    void postpone(int picture);
    void waitForPostponed();
    void decode(int picture);
    void takeResults();

    PictureBytes* source_ = nullptr;
    std::vector<int> wanted_;
    int side_ = 0;
    qreal ratio_ = 1;
    QBasicTimer idle_;
    std::optional<int> reading_;  ///< the picture whose bytes are being read
    QByteArray bytes_;            ///< those read so far
    QBasicTimer retry_;
    QHash<int, Postponed> postponed_;
    QHash<int, qsizetype> decoding_;  ///< with the number of bytes that each has
    int generation_ = 0;              ///< of the source; results for a former one do not count
    QCache<int, Thumbnail> made_;     ///< costs are in kibibytes
    QSet<int> unreadable_;
    std::shared_ptr<Mailbox> mailbox_;
};

}  // namespace varo::ui
