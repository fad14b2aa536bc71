#include "Common/PrintableText.h"

std::string printable(std::string text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte < 0x20 || byte == 0x7F) {
            text[i] = '?';
        } else if (i > 0 && text[i - 1] == '\xC2' && byte >= 0x80 && byte <= 0x9F) {
            text[i - 1] = text[i] = '?';  // U+0080 to U+009F: terminals obey some of them
        }
    }
    return text;
}
