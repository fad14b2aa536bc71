#pragma once

#include "tests/end_to_end/GameSession.h"

/// What a part of the client's window has to look like: a file that a person looks at when it is made.
///
/// A pixel differs where one of its channels does by more than 12 of 255; of a picture at most one pixel in
/// 1,000 may differ. One version of Mesa draws the same bits in every run. Mesa's other software rasteriser,
/// a program of its own, stays within 1 in 8,000 of most pictures; a lone digit of a score is 1 in 100 of its
/// line.
struct CommittedPicture
{
    std::string name;  ///< of the file, without folder and ending
    support::Region region;
    /// How long after its cause the scene stands still; this long is waited before the picture is made anew.
    peer::Clock::duration settling = std::chrono::milliseconds(1800);

    bool isLike(const support::Picture& screen) const;
};

/// Waits until the screen is like the picture, and fails where it does not become so: then it leaves the
/// closest, the expected and the difference picture in the build folder. Returns the closest screenshot.
///
/// With VANTOR_REMAKE_PICTURES in the environment it makes the committed picture anew instead.
support::Picture expectPicture(const GameSession& game, const CommittedPicture& wanted);

/// For a scene with a fault in it: fails where it still looks like the picture.
void expectAnotherPicture(const GameSession& game, const CommittedPicture& wanted, const std::string& fault);
