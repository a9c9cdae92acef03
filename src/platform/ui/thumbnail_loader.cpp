#include "platform/ui/thumbnail_loader.h"

#include "platform/ui/picture.h"

#include <QCoreApplication>
#include <QMutex>
#include <QSemaphore>
#include <QThreadPool>
#include <QTimerEvent>

#include <algorithm>
#include <exception>
#include <numeric>
#include <utility>

namespace varo::ui {

namespace {

/// Most pictures whose bytes are held by workers at a time.
constexpr int kMostDecoding = 3;

/// No further picture is read while workers hold more bytes of pictures.
constexpr qsizetype kMostHeld = 64 * 1024 * 1024;

/// Milliseconds before a picture that could not be read is tried again: at first, and at most.
constexpr int kFirstPause = 100;
constexpr int kLongestPause = 5000;

constexpr int kKibibyte = 1024;
constexpr int kBytesPerPixel = 4;

QEvent::Type resultEvent() {
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

/// What one worker takes of the memory that they all share, waited for if need be.
class DecodingMemory {
  public:
    explicit DecodingMemory(QSemaphore& mebibytes) : mebibytes_(mebibytes) {}
    ~DecodingMemory() { mebibytes_.release(taken_); }
    Q_DISABLE_COPY_MOVE(DecodingMemory)

    /// False for more than there is; to be called once.
    bool take(qint64 bytes) {
        const qint64 wanted = (bytes >> 20) + 1;
        if (wanted > ThumbnailLoader::kDecodingMebibytes) {
            return false;
        }
        taken_ = static_cast<int>(wanted);
        mebibytes_.acquire(taken_);
        return true;
    }

  private:
    QSemaphore& mebibytes_;
    int taken_ = 0;
};

/// Null when the bytes are no picture.
QImage makeThumbnail(const QByteArray& bytes, int side, qreal ratio, QSemaphore& mebibytes) {
    const int box = qRound(side * ratio);
    DecodingMemory memory(mebibytes);
    const Picture picture = Picture::fromBytes(bytes, Picture::kPixelLimit, box,
                                               [&](qint64 needed) { return memory.take(needed); });
    if (picture.isNull()) {
        return {};
    }
    QSize size = (QSizeF(picture.size()) * ratio).toSize();
    if (size.width() > box || size.height() > box) {
        size.scale(box, box, Qt::KeepAspectRatio);
    }
    QImage image = picture.image(size.expandedTo({1, 1}));
    image.setDevicePixelRatio(ratio);
    return image;
}

}  // namespace

/// Where workers leave their results; it outlives the loader as long as one of them runs.
struct ThumbnailLoader::Mailbox {
    struct Result {
        int generation;
        int picture;
        Thumbnail thumbnail;
    };

    void put(Result result) {
        const QMutexLocker locker(&mutex);
        results.push_back(std::move(result));
        if (receiver != nullptr) {
            QCoreApplication::postEvent(receiver, new QEvent(resultEvent()));
        }
    }

    QSemaphore mebibytes{kDecodingMebibytes};
    QMutex mutex;
    QObject* receiver = nullptr;  ///< null once the loader has been destroyed
    std::vector<Result> results;
};

ThumbnailLoader::ThumbnailLoader(QObject* parent)
    : QObject(parent), made_(kCacheBytes / kKibibyte), mailbox_(std::make_shared<Mailbox>()) {
    mailbox_->receiver = this;
}

ThumbnailLoader::~ThumbnailLoader() {
    const QMutexLocker locker(&mailbox_->mutex);
    mailbox_->receiver = nullptr;
}

void ThumbnailLoader::setSource(PictureBytes* source) {
    if (source_ != nullptr && reading_) {
        source_->endReading();
    }
    source_ = source;
    ++generation_;
    wanted_.clear();
    idle_.stop();
    retry_.stop();
    postponed_.clear();
    reading_.reset();
    bytes_.clear();
    decoding_.clear();
    made_.clear();
    unreadable_.clear();
}

void ThumbnailLoader::want(std::vector<int> pictures, int side, qreal ratio) {
    const qreal pixels = side * ratio;
    const auto most =
        static_cast<std::size_t>(kCacheBytes / (kBytesPerPixel * pixels * pixels + kKibibyte));
    wanted_ = std::move(pictures);
    wanted_.resize(std::min(wanted_.size(), most));
    side_ = side;
    ratio_ = ratio;
    if (reading_ && std::ranges::find(wanted_, *reading_) == wanted_.end()) {
        source_->endReading();
        reading_.reset();
    }
    postponed_.removeIf([this](const auto& each) {
        return std::ranges::find(wanted_, each.key()) == wanted_.end();
    });
    if (source_ != nullptr && !idle_.isActive()) {
        idle_.start(0, this);
    }
}

/// Whether an image of the wanted size is to be made.
bool ThumbnailLoader::isWanted(int picture) const {
    if (unreadable_.contains(picture) || decoding_.contains(picture)) {
        return false;
    }
    if (const auto postponed = postponed_.find(picture);
        postponed != postponed_.end() && !postponed->until.hasExpired()) {
        return false;
    }
    const Thumbnail* made = made_.object(picture);
    return made == nullptr || made->side != side_ || made->ratio != ratio_;
}

std::optional<int> ThumbnailLoader::nextPicture() {
    const auto next =
        std::ranges::find_if(wanted_, [this](int picture) { return isWanted(picture); });
    return next == wanted_.end() ? std::nullopt : std::optional(*next);
}

void ThumbnailLoader::timerEvent(QTimerEvent* event) {
    if (event->timerId() == idle_.timerId()) {
        readOn();
    } else if (event->timerId() == retry_.timerId()) {
        retry_.stop();
        idle_.start(0, this);
    }
}

void ThumbnailLoader::postpone(int picture) {
    const auto before = postponed_.find(picture);
    const int pause = before == postponed_.end()
                          ? kFirstPause
                          : std::min(2 * before->milliseconds, kLongestPause);
    postponed_.insert(picture, {QDeadlineTimer(pause), pause});
}

/// Reads on when the first of the postponed pictures is to be tried again.
void ThumbnailLoader::waitForPostponed() {
    if (!postponed_.isEmpty()) {
        const auto first = std::ranges::min_element(
            postponed_, {}, [](const Postponed& each) { return each.until.deadline(); });
        retry_.start(static_cast<int>(first->until.remainingTime()) + 1, this);
    }
}

/// Reads a part of the next picture. Stops while there is none, or the workers have enough to do.
void ThumbnailLoader::readOn() {
    if (!reading_) {
        reading_ = nextPicture();
        bytes_.clear();
    }
    const auto held = std::accumulate(decoding_.cbegin(), decoding_.cend(), qsizetype{0});
    if (!reading_ || decoding_.size() >= kMostDecoding || held > kMostHeld) {
        idle_.stop();
        if (!reading_) {
            waitForPostponed();
        }
        return;
    }
    const int picture = *reading_;
    switch (source_->readBytes(picture, bytes_)) {
        case PictureBytes::Read::Part:
            break;
        case PictureBytes::Read::All:
            reading_.reset();
            postponed_.remove(picture);
            decode(picture);
            break;
        case PictureBytes::Read::Later:
            reading_.reset();
            postpone(picture);
            break;
        case PictureBytes::Read::None:
            reading_.reset();
            unreadable_.insert(picture);
            emit loaded(picture);
            break;
    }
}

void ThumbnailLoader::decode(int picture) {
    decoding_.insert(picture, bytes_.size());
    QThreadPool::globalInstance()->start([mailbox = mailbox_, bytes = std::exchange(bytes_, {}),
                                          generation = generation_, picture, side = side_,
                                          ratio = ratio_] {
        Thumbnail thumbnail{side, ratio, {}};
        try {
            thumbnail.image = makeThumbnail(bytes, side, ratio, mailbox->mebibytes);
        } catch (const std::exception&) {  // no memory: the same as no picture
        }
        mailbox->put({generation, picture, std::move(thumbnail)});
    });
}

bool ThumbnailLoader::event(QEvent* event) {
    if (event->type() != resultEvent()) {
        return QObject::event(event);
    }
    takeResults();
    return true;
}

void ThumbnailLoader::takeResults() {
    std::vector<Mailbox::Result> results;
    {
        const QMutexLocker locker(&mailbox_->mutex);
        results.swap(mailbox_->results);
    }
    for (Mailbox::Result& result : results) {
        if (result.generation != generation_) {
            continue;
        }
        decoding_.remove(result.picture);
        if (result.thumbnail.image.isNull()) {
            unreadable_.insert(result.picture);
        } else {
            const qint64 cost = result.thumbnail.image.sizeInBytes() / kKibibyte + 1;
            made_.insert(result.picture, new Thumbnail(std::move(result.thumbnail)), cost);
        }
        emit loaded(result.picture);
    }
    if (source_ != nullptr && !wanted_.empty() && !idle_.isActive()) {
        idle_.start(0, this);
    }
}

}  // namespace varo::ui
