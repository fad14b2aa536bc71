#pragma once

#include <string>

/// Reads the model file and compiles its triangles into an OpenGL display list. Normals and texture
/// coordinates are included if the file has them. Returns the list's name. Ignores materials. An unreadable
/// file prints a line and yields 0.
unsigned int loadModelFile(const std::string& path);

/// The importer's post-processing, as aiPostProcessSteps.
extern const unsigned int modelImportFlags;
