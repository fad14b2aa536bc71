#pragma once

#include <string>

namespace support {

struct Pixel
{
    int red, green, blue;  ///< 0 to 255

    // These two hold also for a lit, textured surface; a pure one is text in its full colour.
    bool isReddish() const { return red > 40 && red > 2 * green && red > 2 * blue; }
    bool isBluish() const { return blue > 40 && blue > 2 * green && blue > 2 * red; }
    bool isPureGreen() const { return green > 220 && red < 40 && blue < 40; }
    bool isWhite() const { return red > 220 && green > 220 && blue > 220; }
};

/// A rectangle of window pixels, from its top left corner; within the window.
struct Region
{
    int x, y, width, height;
};

class Picture
{
public:
    /// The content of a binary PPM file with 8 bits per channel; throws where it is none.
    explicit Picture(const std::string& ppm);

    Pixel at(int x, int y) const;

    /// How many pixels of the region are of the kind.
    int count(Region region, bool (Pixel::*isOfTheKind)() const) const;

    Region whole() const { return {0, 0, columns, rows}; }
    Picture crop(Region region) const;
    /// Puts another picture over this one, its top left corner at (x, y); it must fit.
    void paste(const Picture& other, int x, int y);
    /// As the constructor reads it.
    std::string ppm() const;

private:
    Picture(int width, int height);
    std::size_t offset(int x, int y) const { return static_cast<std::size_t>((y * columns + x) * 3); }

    int columns = 0;
    int rows = 0;
    std::string bytes;  ///< three for each pixel, row by row from the top
};

/// How many pixels of the region differ between two pictures of one size, by more than `tolerance` of 255 in
/// any channel.
int countChanged(const Picture& before, const Picture& after, Region region, int tolerance = 24);

}  // namespace support
