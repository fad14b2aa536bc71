#include "engine/ModelLoader.h"

#include "Common/DebugPrint.h"
#include "engine/OpenGL.h"

#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <assimp/Importer.hpp>

const unsigned int modelImportFlags = aiProcess_CalcTangentSpace | aiProcess_JoinIdenticalVertices |
                                      aiProcess_Triangulate | aiProcess_SortByPType;

namespace {

void emitVertex(const aiMesh& mesh, unsigned int i)
{
    if (mesh.HasNormals()) {
        const aiVector3D& normal = mesh.mNormals[i];
        glNormal3f(normal.x, normal.y, normal.z);
    }
    if (mesh.HasTextureCoords(0)) {
        // Models count v from the bottom, our images start at the top.
        const aiVector3D& coordinate = mesh.mTextureCoords[0][i];
        glTexCoord2d(static_cast<double>(coordinate.x), 1.0 - static_cast<double>(coordinate.y));
    }
    const aiVector3D& vertex = mesh.mVertices[i];
    glVertex3f(vertex.x, vertex.y, vertex.z);
}

void emitMesh(const aiMesh& mesh)
{
    for (unsigned int f = 0; f < mesh.mNumFaces; ++f) {
        const aiFace& face = mesh.mFaces[f];
        glBegin(face.mNumIndices == 3 ? GL_TRIANGLES : GL_POLYGON);
        for (unsigned int i = 0; i < face.mNumIndices; ++i) {
            emitVertex(mesh, face.mIndices[i]);
        }
        glEnd();
    }
}

}  // namespace

unsigned int loadModelFile(const std::string& path)
{
    Assimp::Importer importer;
    const aiScene* scene = importer.ReadFile(path, modelImportFlags);
    if (scene == nullptr) {
        DebugPrint("%s\n", importer.GetErrorString());
        return 0;
    }
    const unsigned int list = glGenLists(1);
    unsigned int faces = 0;
    glNewList(list, GL_COMPILE);
    for (unsigned int m = 0; m < scene->mNumMeshes; ++m) {
        emitMesh(*scene->mMeshes[m]);
        faces += scene->mMeshes[m]->mNumFaces;
    }
    glEndList();
    DebugPrint("With Faces: %d\n", static_cast<int>(faces));
    return list;
}
