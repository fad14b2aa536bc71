#include "scene/Player.h"
#include "tests/engine/FreshWorld.h"

#include <cmath>
#include <fstream>
#include <memory>
#include <sstream>

using Motion = FreshWorld;

TEST_F(Motion, FollowsTheScenarios)
{
    std::unique_ptr<Transform> object;
    std::ifstream file(VANTOR_TESTS "scene/golden/motion.txt");
    int lines = 0;
    for (std::string line; std::getline(file, line); ++lines) {
        SCOPED_TRACE(line);
        std::istringstream words(line);
        std::string word, time;
        Vector3 numbers;
        float degrees = 0.0F;
        words >> word >> time >> numbers.x >> numbers.y >> numbers.z >> degrees;
        if (word == "object") {
            object = std::make_unique<Transform>(1ULL);
        } else if (word == "player") {
            object = std::make_unique<Player>(1ULL, true, 100);
        } else if (word == "reset" || word == "state") {
            Quaternion orientation = Quaternion::FromEuler(0.0F, degrees, 0.0F);
            object->updateInfo(static_cast<unsigned int>(std::stoul(time)), numbers, orientation,
                               word == "reset");
        } else if (word == "velocity") {
            expectNear(object->velocity[0], numbers);
            EXPECT_TRUE(object->velocity[0] * numbers >= 0.0F);
        } else if (word == "frame") {
            object->realUpdate(std::stof(time));
            const bool isPlayer = object->type == SGT_PLAYER;
            expectNear(isPlayer ? object->position : object->smoothPosition, numbers);
            EXPECT_TRUE(isPlayer || object->position == Vector3()) << "drawn where it was put";
            const Vector3 nose = object->orientation.rotate({0.0F, 0.0F, 1.0F});
            EXPECT_NEAR(std::atan2(nose.x, nose.z) * 57.29578F, degrees, 0.05F);
        }
    }
    EXPECT_GT(lines, 90);
}
