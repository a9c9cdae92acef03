#include "calc/complaint.h"

#include "engine/text/unicode.h"

#include <array>
#include <cerrno>
#include <iostream>
#include <system_error>

namespace varo::calc {
namespace {

constexpr std::size_t kLongestExcerpt = 40;

bool controlsTerminal(char32_t character) {
    return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

}  // namespace

void complain(std::string_view message) {
    std::string lines;
    while (!message.empty()) {
        const std::size_t end = message.find('\n');
        lines.append("varo-calc: ").append(message.substr(0, end)).append("\n");
        message.remove_prefix(end == std::string_view::npos ? message.size() : end + 1);
    }
    std::cerr << lines << std::flush;
}

std::string messageOf(engine::Error error) {
    error.subject = excerpt(error.subject);
    std::string message = error.text();
    const bool tellsPosition = error.code == engine::ErrorCode::BadCharacter;
    if (error.position != 0 && !tellsPosition) {
        message += "（公式第" + std::to_string(error.position) + "个字符）";
    }
    return message;
}

std::string excerpt(std::string_view text) {
    std::string result;
    const char* at = text.data();
    const char* const end = at + text.size();
    for (std::size_t count = 0; at != end; ++count) {
        if (count == kLongestExcerpt) {
            return result + "…";
        }
        const engine::Decoded next = engine::decode(at, end);
        engine::appendCharacter(result, controlsTerminal(next.character)
                                            ? engine::kReplacementCharacter
                                            : next.character);
        at += next.bytes;
    }
    return result;
}

std::string reasonOf(int systemError) {
    struct Reason {
        int systemError;
        const char* text;
    };
    static constexpr std::array reasons{
        Reason{EBADF, "没有打开"},   Reason{ENOENT, "没有这个文件"},
        Reason{EACCES, "没有权限"},  Reason{EISDIR, "这是一个文件夹"},
        Reason{ENOSPC, "磁盘已满"},  Reason{EPIPE, "接收输出的程序已结束"},
        Reason{EIO, "输入输出故障"},
    };
    for (const Reason& reason : reasons) {
        if (reason.systemError == systemError) {
            return reason.text;
        }
    }
    return std::generic_category().message(systemError);
}

}  // namespace varo::calc
