#include "server/match/BotSkill.h"

#include <array>
#include <cstddef>

namespace practice {

namespace {

constexpr std::array<BotSkill, 3> byDifficulty = {{
    {0.15F, 0.9F, 0.25F, 0.3F, 3.5F},
    {0.09F, 0.6F, 0.25F, 0.6F, 1.8F},
    {0.06F, 0.4F, 0.25F, 1.0F, 0.0F},
}};

}  // namespace

BotSkill drawSkill(Difficulty difficulty, Random& random)
{
    BotSkill skill = byDifficulty[static_cast<std::size_t>(difficulty)];
    const float clumsiness = random.between(0.75F, 1.25F);
    skill.aimError *= clumsiness;
    skill.aimPeriod *= clumsiness;
    skill.evasion /= clumsiness;
    skill.agility /= clumsiness;
    skill.restraint *= clumsiness;
    return skill;
}

}  // namespace practice
