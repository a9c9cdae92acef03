#include "platform/pictures/picture_format.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace varo {

namespace {

using namespace std::string_view_literals;

constexpr struct {
    std::string_view signature;
    PictureFormat format;
} kSignatures[] = {
    {"BM"sv, PictureFormat::Bmp},
    {"\xFF\xD8\xFF"sv, PictureFormat::Jpeg},
    {"\x89PNG\r\n\x1A\n"sv, PictureFormat::Png},
    {"\xD7\xCD\xC6\x9A"sv, PictureFormat::PlacedMetafile},
    // In memory (1) or on disk (2), a header of nine words, of version 1 or 3.
    {"\x01\x00\x09\x00\x00\x01"sv, PictureFormat::Metafile},
    {"\x01\x00\x09\x00\x00\x03"sv, PictureFormat::Metafile},
    {"\x02\x00\x09\x00\x00\x01"sv, PictureFormat::Metafile},
    {"\x02\x00\x09\x00\x00\x03"sv, PictureFormat::Metafile},
};

}  // namespace

PictureFormat pictureFormatOf(QByteArrayView head) {
    const auto found = std::ranges::find_if(kSignatures, [&](const auto& each) {
        return head.startsWith(
            QByteArrayView(each.signature.data(), static_cast<qsizetype>(each.signature.size())));
    });
    return found == std::end(kSignatures) ? PictureFormat::None : found->format;
}

}  // namespace varo
