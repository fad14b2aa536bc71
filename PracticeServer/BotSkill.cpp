#include "PracticeServer/BotSkill.h"

#include <array>
#include <cstddef>

namespace practice {

namespace {

constexpr std::array<BotSkill, 3> byDifficulty = {{
    {0.16F, 0.9F, 130.0F, 0.3F, 1.5F},
    {0.06F, 0.6F, 240.0F, 0.4F, 0.3F},
    {0.03F, 0.4F, 260.0F, 0.8F, 0.0F},
}};

}  // namespace

BotSkill drawSkill(Difficulty difficulty, Random& random)
{
    BotSkill skill = byDifficulty[static_cast<std::size_t>(difficulty)];
    const float clumsiness = random.between(0.75F, 1.25F);
    skill.aimError *= clumsiness;
    skill.aimPeriod *= clumsiness;
    skill.fireDistance /= clumsiness;
    skill.evasion /= clumsiness;
    skill.restraint *= clumsiness;
    return skill;
}

}  // namespace practice
