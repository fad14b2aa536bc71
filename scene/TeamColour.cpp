#include "scene/TeamColour.h"

#include "engine/OpenGL.h"

void setTeamColour(bool blueTeam)
{
    if (blueTeam) {
        glColor3f(0.0F, 0.0F, 1.0F);
    } else {
        glColor3f(1.0F, 0.0F, 0.0F);
    }
}
