#include "tests/support/Picture.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace support {

Picture::Picture(const std::string& ppmFile)
{
    std::ifstream file(ppmFile, std::ios::binary);
    std::string magic;
    int maximum = 0;
    file >> magic >> columns >> rows >> maximum;
    file.get();  // the one blank before the pixels
    if (!file || magic != "P6" || maximum != 255) {
        throw std::runtime_error("no picture in " + ppmFile);
    }
    bytes.resize(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows) * 3);
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file) {
        throw std::runtime_error("half a picture in " + ppmFile);
    }
}

Pixel Picture::at(int x, int y) const
{
    const auto first =
        (static_cast<std::size_t>(y) * static_cast<std::size_t>(columns) + static_cast<std::size_t>(x)) * 3;
    const auto channel = [&](std::size_t i) {
        return static_cast<int>(static_cast<unsigned char>(bytes[first + i]));
    };
    return {channel(0), channel(1), channel(2)};
}

int Picture::count(Region region, const std::function<bool(Pixel)>& isOfTheKind) const
{
    int found = 0;
    for (int y = std::max(region.y, 0); y < std::min(region.y + region.height, rows); ++y) {
        for (int x = std::max(region.x, 0); x < std::min(region.x + region.width, columns); ++x) {
            found += isOfTheKind(at(x, y)) ? 1 : 0;
        }
    }
    return found;
}

int countChanged(const Picture& before, const Picture& after, Region region)
{
    constexpr int visible = 24;  // of 255, in any channel
    int changed = 0;
    for (int y = region.y; y < region.y + region.height; ++y) {
        for (int x = region.x; x < region.x + region.width; ++x) {
            const Pixel a = before.at(x, y);
            const Pixel b = after.at(x, y);
            const int difference =
                std::max({std::abs(a.red - b.red), std::abs(a.green - b.green), std::abs(a.blue - b.blue)});
            changed += difference > visible ? 1 : 0;
        }
    }
    return changed;
}

bool isReddish(Pixel p)
{
    return p.red > 40 && p.red > 2 * p.green && p.red > 2 * p.blue;
}
bool isBluish(Pixel p)
{
    return p.blue > 40 && p.blue > 2 * p.green && p.blue > 2 * p.red;
}
bool isPureRed(Pixel p)
{
    return p.red > 220 && p.green < 40 && p.blue < 40;
}
bool isPureGreen(Pixel p)
{
    return p.green > 220 && p.red < 40 && p.blue < 40;
}
bool isPureBlue(Pixel p)
{
    return p.blue > 220 && p.red < 40 && p.green < 40;
}
bool isWhite(Pixel p)
{
    return p.red > 220 && p.green > 220 && p.blue > 220;
}

}  // namespace support
