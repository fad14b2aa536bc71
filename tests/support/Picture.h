#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace support {

struct Pixel
{
    int red, green, blue;  ///< 0 to 255
};

/// A rectangle of window pixels, from its top left corner.
struct Region
{
    int x, y, width, height;
};

class Picture
{
public:
    /// Reads a binary PPM file with 8 bits per channel; throws where it is none.
    explicit Picture(const std::string& ppmFile);

    Pixel at(int x, int y) const;
    int width() const { return columns; }
    int height() const { return rows; }

    /// How many pixels of the region are of the kind. The part outside the picture does not count.
    int count(Region region, const std::function<bool(Pixel)>& isOfTheKind) const;

private:
    int columns = 0;
    int rows = 0;
    std::string bytes;  ///< three for each pixel, row by row from the top
};

/// How many pixels of the region differ visibly between two pictures of one size.
int countChanged(const Picture& before, const Picture& after, Region region);

/// Kinds of pixel. The first two hold also for a lit, textured surface; a pure one is text in its full
/// colour.
bool isReddish(Pixel p);
bool isBluish(Pixel p);
bool isPureRed(Pixel p);
bool isPureGreen(Pixel p);
bool isPureBlue(Pixel p);
bool isWhite(Pixel p);

}  // namespace support
