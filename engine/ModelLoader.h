#pragma once

#include <string>

/// Reads the model file and compiles its triangles, with normals and texture coordinates where it has them,
/// into an OpenGL display list; returns the list's name. Materials are ignored. A file that cannot be read is
/// reported and yields 0.
unsigned int loadModelFile(const std::string& path);

/// What the importer is asked to do beyond reading, as its aiPostProcessSteps.
extern const unsigned int modelImportFlags;
