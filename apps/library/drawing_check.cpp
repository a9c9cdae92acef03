#include "library/drawing_check.h"

#include "platform/pictures/picture_format.h"

#include <QBuffer>
#include <QHash>
#include <QImageReader>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <vector>

namespace varo {

namespace {

constexpr qsizetype kMostBytes = 4 << 20;
constexpr int kMostDepth = 100;
/// Levels of elements with the references between them, which are drawn by recursion.
constexpr int kMostLevels = 300;
constexpr int kMostElements = 20'000;
/// Of all pictures together; the renderer reads none of more.
constexpr qint64 kMostPixels = 16 << 20;
constexpr int kMostRules = 500;
/// Elements times style rules: each rule is tried on each element.
constexpr qint64 kMostMatches = 1'000'000;

/// Reads a drawing from its start to its end, or to the first thing that is not allowed.
class DrawingCheck {
  public:
    explicit DrawingCheck(const QByteArray& drawing) : xml_(drawing) {}

    QString problem();

  private:
    /// An element with those in it, and those that it refers to.
    struct Element {
        std::vector<int> parts;
        QStringList references;
        qint64 drawn = kUnknown;  ///< elements that are drawn for it
    };

    static constexpr qint64 kUnknown = -1;
    static constexpr qint64 kBegun = -2;

    void read();
    void startElement();
    void endElement();
    void readAttribute(Element& element, const QXmlStreamAttribute& attribute);
    void readReference(Element& element, const QString& target);
    void readStyle(const QString& style);
    void requirePicture(const QString& data);
    void requireBoundedReferences();
    qint64 drawnFor(int element, int depth);

    void refuse(const QString& problem) {
        if (problem_.isEmpty()) {
            problem_ = QStringLiteral("line %1: ").arg(xml_.lineNumber()) + problem;
        }
    }

    QXmlStreamReader xml_;
    QString problem_;
    std::vector<Element> elements_;
    std::vector<int> open_;
    QHash<QString, int> byId_;
    int rules_ = 0;
    qint64 pixels_ = 0;
    bool inStyle_ = false;
};

QString DrawingCheck::problem() {
    while (problem_.isEmpty() && !xml_.atEnd()) {
        read();
    }
    if (problem_.isEmpty() && xml_.hasError()) {
        refuse(QStringLiteral("no SVG drawing: ") + xml_.errorString());
    }
    if (problem_.isEmpty()) {
        requireBoundedReferences();
    }
    return problem_;
}

void DrawingCheck::read() {
    switch (xml_.readNext()) {
        case QXmlStreamReader::ProcessingInstruction:
            refuse(QStringLiteral("a drawing has no processing instructions"));
            break;
        case QXmlStreamReader::DTD:
            if (!xml_.entityDeclarations().isEmpty()) {
                refuse(QStringLiteral("a drawing declares no entities"));
            }
            break;
        case QXmlStreamReader::StartElement:
            startElement();
            break;
        case QXmlStreamReader::EndElement:
            endElement();
            break;
        case QXmlStreamReader::Characters:
            if (inStyle_) {
                readStyle(xml_.text().toString());
            }
            break;
        default:
            break;
    }
}

void DrawingCheck::startElement() {
    const auto place = static_cast<int>(elements_.size());
    if (place == kMostElements || open_.size() == kMostDepth) {
        refuse(QStringLiteral("a drawing has at most %1 elements, %2 within one another")
                   .arg(kMostElements)
                   .arg(kMostDepth));
        return;
    }
    inStyle_ = inStyle_ || xml_.name() == u"style";
    if (!open_.empty()) {
        elements_[static_cast<std::size_t>(open_.back())].parts.push_back(place);
    }
    open_.push_back(place);
    Element element;
    const QXmlStreamAttributes attributes = xml_.attributes();
    for (const QXmlStreamAttribute& attribute : attributes) {
        readAttribute(element, attribute);
    }
    elements_.push_back(std::move(element));
}

void DrawingCheck::endElement() {
    inStyle_ = inStyle_ && xml_.name() != u"style";
    open_.pop_back();
}

void DrawingCheck::readAttribute(Element& element, const QXmlStreamAttribute& attribute) {
    const QString value = attribute.value().trimmed().toString();
    if (attribute.name().compare(u"href", Qt::CaseInsensitive) == 0) {
        readReference(element, value);
        return;
    }
    if (attribute.name() == u"id") {
        if (byId_.contains(value)) {
            refuse(QStringLiteral("two elements have the id \"%1\"").arg(value.left(80)));
        }
        byId_.insert(value, static_cast<int>(elements_.size()));
    }
    static const QRegularExpression kUrl(QStringLiteral(R"(url\s*\(\s*["']?\s*([^"')\s]*))"),
                                         QRegularExpression::CaseInsensitiveOption);
    for (auto match = kUrl.globalMatch(value); match.hasNext();) {
        const QString target = match.next().captured(1);
        if (!target.startsWith(u'#')) {
            refuse(QStringLiteral("\"%1\" lies outside the drawing").arg(target.left(80)));
        }
    }
}

void DrawingCheck::readReference(Element& element, const QString& target) {
    if (target.startsWith(u'#')) {
        element.references.append(target.mid(1));
    } else if (target.startsWith(u"data:")) {
        requirePicture(target);
    } else if (xml_.name() != u"a") {  // what a link leads to is not drawn
        refuse(QStringLiteral("\"%1\" lies outside the drawing").arg(target.left(80)));
    }
}

void DrawingCheck::readStyle(const QString& style) {
    // Each selector, and each word of one, is tried by itself.
    rules_ += static_cast<int>(style.count(u'{') + style.count(u','));
    // A backslash would write the same words in other characters.
    if (style.contains(u"@import", Qt::CaseInsensitive) ||
        style.contains(u"url", Qt::CaseInsensitive) || style.contains(u'\\')) {
        refuse(QStringLiteral("a style sheet in a drawing refers to nothing"));
    }
    if (rules_ > kMostRules) {
        refuse(QStringLiteral("a drawing has at most %1 style rules").arg(kMostRules));
    }
}

/// Only what a reader of pixels takes, spelt in the one way in which the renderer reads the same
/// bytes: a drawing within the drawing could refer to anything.
void DrawingCheck::requirePicture(const QString& data) {
    static const QRegularExpression kPixels(
        QStringLiteral("^data:image/(?:png|jpe?g);base64,([A-Za-z0-9+/=\\s]*)$"));
    const auto match = kPixels.match(data);
    const auto decoded = QByteArray::fromBase64Encoding(
        match.captured(1).remove(QRegularExpression(QStringLiteral("\\s"))).toLatin1(),
        QByteArray::Base64Encoding | QByteArray::AbortOnBase64DecodingErrors);
    const PictureFormat format = pictureFormatOf(decoded.decoded);
    const bool isPng = format == PictureFormat::Png;
    if (!match.hasMatch() || !decoded || (!isPng && format != PictureFormat::Jpeg)) {
        refuse(QStringLiteral("a picture in a drawing is a png or jpg in base64"));
        return;
    }
    QByteArray bytes = decoded.decoded;
    QBuffer buffer(&bytes);
    const QSize size = QImageReader(&buffer, isPng ? "png" : "jpeg").size();
    pixels_ += size.isEmpty() ? kMostPixels + 1 : qint64{size.width()} * size.height();
    if (pixels_ > kMostPixels) {
        refuse(QStringLiteral("the pictures in a drawing have at most %1 pixels together")
                   .arg(kMostPixels));
    }
}

void DrawingCheck::requireBoundedReferences() {
    const qint64 drawn = elements_.empty() ? 0 : drawnFor(0, 0);
    if (drawn > kMostElements) {
        refuse(QStringLiteral("references draw more than %1 elements").arg(kMostElements));
    } else if (drawn * rules_ > kMostMatches) {
        refuse(QStringLiteral("too many elements for %1 style rules").arg(rules_));
    }
}

/// Elements that are drawn for one, those that it refers to included; more than kMostElements when
/// it refers to itself, or references lead too deep.
qint64 DrawingCheck::drawnFor(int element, int depth) {
    Element& self = elements_[static_cast<std::size_t>(element)];
    if (self.drawn == kBegun || depth == kMostLevels) {
        return kMostElements + 1;
    }
    if (self.drawn == kUnknown) {
        self.drawn = kBegun;
        qint64 drawn = 1;
        for (const int part : self.parts) {
            drawn += drawnFor(part, depth + 1);
        }
        for (const QString& id : self.references) {
            const int target = byId_.value(id, -1);
            drawn += target < 0 ? 0 : drawnFor(target, depth + 1);
        }
        self.drawn = std::min<qint64>(drawn, kMostElements + 1);
    }
    return self.drawn;
}

}  // namespace

QString drawingProblem(const QByteArray& drawing) {
    if (drawing.startsWith("\x1f\x8b")) {
        return QStringLiteral("a drawing is plain text, not compressed");
    }
    if (drawing.size() > kMostBytes) {
        return QStringLiteral("a drawing has at most %1 bytes").arg(kMostBytes);
    }
    return DrawingCheck(drawing).problem();
}

}  // namespace varo
