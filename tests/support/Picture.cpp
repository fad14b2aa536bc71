#include "tests/support/Picture.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <stdexcept>

namespace support {

namespace {

template <class Condition>
int countPixels(Region region, const Condition& holdsAt)
{
    int found = 0;
    for (int y = region.y; y < region.y + region.height; ++y) {
        for (int x = region.x; x < region.x + region.width; ++x) {
            found += holdsAt(x, y) ? 1 : 0;
        }
    }
    return found;
}

}  // namespace

Picture::Picture(const std::string& ppm)
{
    std::istringstream file(ppm);
    std::string magic;
    int maximum = 0;
    file >> magic >> columns >> rows >> maximum;
    file.get();  // the one blank before the pixels
    bytes.assign(std::istreambuf_iterator<char>(file), {});
    if (magic != "P6" || maximum != 255 || bytes.size() != static_cast<std::size_t>(columns * rows * 3)) {
        throw std::runtime_error("this is no picture");
    }
}

Pixel Picture::at(int x, int y) const
{
    const auto channel = [&](std::size_t i) {
        return static_cast<int>(static_cast<unsigned char>(bytes.at(offset(x, y) + i)));
    };
    return {channel(0), channel(1), channel(2)};
}

Picture::Picture(int width, int height)
    : columns(width), rows(height), bytes(static_cast<std::size_t>(width * height * 3), '\0')
{
}

Picture Picture::crop(Region region) const
{
    Picture part(region.width, region.height);
    for (int y = 0; y < region.height; ++y) {
        bytes.copy(&part.bytes[part.offset(0, y)], part.offset(0, 1), offset(region.x, region.y + y));
    }
    return part;
}

void Picture::paste(const Picture& other, int x, int y)
{
    for (int row = 0; row < other.rows; ++row) {
        bytes.replace(offset(x, y + row), other.offset(0, 1), other.bytes, other.offset(0, row),
                      other.offset(0, 1));
    }
}

std::string Picture::ppm() const
{
    return "P6\n" + std::to_string(columns) + " " + std::to_string(rows) + "\n255\n" + bytes;
}

int Picture::count(Region region, bool (Pixel::*isOfTheKind)() const) const
{
    return countPixels(region, [&](int x, int y) { return (at(x, y).*isOfTheKind)(); });
}

int countChanged(const Picture& before, const Picture& after, Region region, int tolerance)
{
    return countPixels(region, [&](int x, int y) {
        const Pixel a = before.at(x, y);
        const Pixel b = after.at(x, y);
        return std::max({std::abs(a.red - b.red), std::abs(a.green - b.green), std::abs(a.blue - b.blue)}) >
               tolerance;
    });
}

}  // namespace support
