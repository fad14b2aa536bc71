#include "tests/pictures/CommittedPicture.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>

using support::Picture;

namespace {

constexpr int tolerance = 12;     // of 255
constexpr int onePixelIn = 1000;  // may differ
constexpr auto patience = 10;     // settling times, for a machine that is busy

std::string fileOf(const CommittedPicture& picture)
{
    return VANTOR_PICTURES + picture.name + ".png";
}

const Picture& load(const CommittedPicture& picture)
{
    static std::map<std::string, Picture> loaded;
    const auto found = loaded.find(picture.name);
    if (found != loaded.end()) {
        return found->second;
    }
    const std::string ppm = support::outputOf({"convert", fileOf(picture), "-depth", "8", "ppm:-"});
    return loaded.emplace(picture.name, Picture(ppm)).first->second;
}

void save(const Picture& picture, const std::string& file)
{
    const std::string raw = file + ".ppm";
    std::ofstream(raw, std::ios::binary) << picture.ppm();
    support::outputOf({"convert", raw, "-strip", "-define", "png:compression-level=9", "-define",
                       "png:exclude-chunks=date,time", file});
    std::remove(raw.c_str());
}

int countDifferent(const Picture& screen, const CommittedPicture& wanted)
{
    const Picture& expected = load(wanted);
    return countChanged(screen.crop(wanted.region), expected, expected.whole(), tolerance);
}

void reportFailure(const Picture& screen, const CommittedPicture& wanted)
{
    const std::string prefix = VANTOR_PICTURE_FAILURES + wanted.name;
    const std::string actual = prefix + ".actual.png";
    const std::string expected = prefix + ".expected.png";
    const std::string difference = prefix + ".difference.png";
    save(screen.crop(wanted.region), actual);
    save(load(wanted), expected);
    support::outputOf({"convert", actual, expected, "-compose", "difference", "-composite", "-evaluate",
                       "multiply", "4", difference});
    ADD_FAILURE() << wanted.name << ": " << countDifferent(screen, wanted) << " of "
                  << wanted.region.width * wanted.region.height << " pixels differ; see\n  " << actual
                  << "\n  " << expected << "\n  " << difference;
}

}  // namespace

bool CommittedPicture::isLike(const Picture& screen) const
{
    return countDifferent(screen, *this) * onePixelIn <= region.width * region.height;
}

Picture expectPicture(const GameSession& game, const CommittedPicture& wanted)
{
    if (std::getenv("VANTOR_REMAKE_PICTURES") != nullptr) {
        std::this_thread::sleep_for(wanted.settling);
        save(game.display.screenshot().crop(wanted.region), fileOf(wanted));
    }
    Picture closest = game.display.screenshot();  // what passes is gone when patience ends
    const auto isThere = [&] {
        const Picture screen = game.display.screenshot();
        if (countDifferent(screen, wanted) < countDifferent(closest, wanted)) {
            closest = screen;
        }
        return wanted.isLike(closest);
    };
    if (!peer::eventually(isThere, patience * wanted.settling)) {
        reportFailure(closest, wanted);
    }
    return closest;
}

void expectAnotherPicture(const GameSession& game, const CommittedPicture& wanted, const std::string& fault)
{
    std::this_thread::sleep_for(wanted.settling);
    EXPECT_FALSE(wanted.isLike(game.display.screenshot())) << wanted.name << " with this fault: " << fault;
}
