#pragma once

/// Makes the team's colour, pure red or pure blue, the current OpenGL colour.
void setTeamColour(bool blueTeam);
