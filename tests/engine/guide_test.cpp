#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <utility>

namespace {

std::string contentOf(const std::string& path) {
    std::ostringstream content;
    content << std::ifstream(path).rdbuf();
    return content.str();
}

}  // namespace

TEST(EngineGuide, ShowsTheCodeOfTheConsumerAndWhatItPrints) {
    const std::string guide = contentOf(VARO_GUIDE);
    for (const auto& [language, name] : {std::pair{"cmake", "CMakeLists.txt"},
                                         {"cpp", "main.cpp"},
                                         {"text", "expected_output.txt"}}) {
        const std::string source = contentOf(std::string(VARO_CONSUMER) + name);
        const std::string fence = std::string("\n```") + language + '\n';
        std::size_t at = guide.find(fence);
        EXPECT_NE(at, std::string::npos) << language;
        for (; at != std::string::npos; at = guide.find(fence, at + 1)) {
            const std::size_t begin = at + fence.size();
            const std::string block = guide.substr(begin, guide.find("```", begin) - begin);
            EXPECT_NE(source.find(block), std::string::npos) << block;
        }
    }
}
