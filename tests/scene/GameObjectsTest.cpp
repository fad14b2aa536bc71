#include "GUIClient/VTEntryPoint.h"
#include "engine/ResourceManager.h"
#include "scene/Billboard.h"
#include "scene/Player.h"
#include "scene/Projectile.h"
#include "scene/SceneGraph.h"
#include "scene/SceneObjectFactory.h"
#include "scene/TestCube.h"
#include "tests/engine/FreshWorld.h"
#include "tests/engine/GLRecorder.h"

#include <SDL_opengl.h>
#include <gtest/gtest.h>

#include <string>

namespace {

constexpr float quarterTurn = 1.5707964F;

class GameObjects : public FreshWorld
{
protected:
    // Textures 11 and 12, models 21 to 23: nothing is loaded from disk.
    GameObjects()
    {
        ResourceManager* resources = ResourceManager::getInstance();
        resources->textures = {
            {"texture-white.png", 11}, {"carrier-texture-white.png", 12}, {"BOOOM.png", 13}};
        resources->models = {{"fighter.obj", 21}, {"shot.obj", 22}, {"carrier.obj", 23}};
    }

    bool isQueued() { return !graph->removeList.empty(); }

    SceneGraph* graph = SceneGraph::getInstance();
};

}  // namespace

TEST_F(GameObjects, ANodeScalesMovesTurnsDrawsItselfAndThenItsChildren)
{
    Transform node(1ULL);
    node.scale(1.0F, 3.0F, 2.0F);
    node.scale({2.0F, 1.0F, 2.0F});
    node.translate(1.0F, 5.0F, 6.0F);
    node.rotate(quarterTurn, {0.0F, 1.0F, 0.0F});
    node.rotate(quarterTurn, {1.0F, 0.0F, 0.0F});  // the later turn acts first: +y goes to +z and on to +x
    Player child(1U, 2U, true, 100);
    EXPECT_EQ(child.id, 0x100000002ULL);
    node.attach(&child);
    node.draw();
    EXPECT_TRUE(recordedExactly(
        R"(glPushMatrix; glScalef 2 3 4; glTranslatef 1 5 6; glMultMatrixf 0 0 -1 0 1 0 0 0 0 -1 0 0 0 0 0 1;
        glPushMatrix; glScalef 1 1 1; glTranslatef 0 0 0; glMultMatrixf 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1;
        glPushMatrix; glColor3f 0 0 1; glBindTexture GL_TEXTURE_2D 11; glScalef 0.05 0.05 0.05;
        glCallList 21; glColor3f 1 1 1; glPopMatrix; glPopMatrix; glPopMatrix)"));
}

TEST_F(GameObjects, AShotIsDrawnUntexturedAndLeavesItsColourSet)
{
    for (const bool blue : {false, true}) {
        Projectile shot(1ULL);
        shot.blueTeam = blue;
        shot.realDraw();
        EXPECT_TRUE(recordedExactly(R"(glPushMatrix; glDisable GL_TEXTURE_2D;
        glColor3f )" + std::string(blue ? "0 0 1" : "1 0 0") +
                                    R"(; glScalef 0.01 0.01 0.01;
        glCallList 22; glEnable GL_TEXTURE_2D; glPopMatrix)"));
    }
}

TEST_F(GameObjects, ACarrierIsDrawnAtItsOffsetUnscaled)
{
    TestCube carrier(7, true, false);
    EXPECT_EQ(carrier.type, 3);
    carrier.realDraw();
    EXPECT_TRUE(recordedExactly(
        R"(glPushMatrix; glColor3f 1 0 0; glTranslatef 0 -13 -130; glBindTexture GL_TEXTURE_2D 12;
        glCallList 23; glColor3f 1 1 1; glPopMatrix)"));
}

TEST_F(GameObjects, AnExplosionIsAQuadOfTenUnitsCentredByAHalfTurn)
{
    Billboard(1).realDraw();
    EXPECT_TRUE(recordedExactly(R"(glPushMatrix; glTranslatef 5 5 0; glRotatef 180 0 0 1; glColor3f 1 1 1;
        glBindTexture GL_TEXTURE_2D 13; glBegin GL_QUADS; glTexCoord2f 0 1; glVertex3f 0 10 0;
        glTexCoord2f 1 1; glVertex3f 10 10 0; glTexCoord2f 1 0; glVertex3f 10 0 0; glTexCoord2f 0 0;
        glVertex3f 0 0 0; glEnd; glPopMatrix)"));
}

TEST_F(GameObjects, ACarrierStaysWhateverTheServerSays)
{
    TestCube carrier(7, true, true);
    carrier.translate(1.0F, 2.0F, 3.0F);
    Vector3 elsewhere(100.0F, 0.0F, 0.0F);
    Quaternion turned(0.0F, 1.0F, 0.0F, 0.0F);
    carrier.updateInfo(1000, elsewhere, turned, true);
    carrier.update(1.0F);
    EXPECT_EQ(carrier.position, Vector3(1.0F, 2.0F, 3.0F));
    EXPECT_EQ(carrier.orientation, Quaternion());
}

TEST_F(GameObjects, AShotLeavesBelowNoLifetimeAndMovesInThatFrameToo)
{
    auto* shot = new Projectile(1ULL);
    EXPECT_EQ(shot->lifetime, 20.0F);
    graph->attach(shot);
    Vector3 start(3.0F, 0.0F, 0.0F);
    shot->updateInfo(0, start, shot->orientation, true);
    shot->currentVelocity = {8.0F, 0.0F, 0.0F};
    graph->update(20.0F);
    EXPECT_EQ(shot->lifetime, 0.0F);
    EXPECT_FALSE(isQueued());
    EXPECT_EQ(shot->position.x, 163.0F);
    graph->update(0.25F);
    EXPECT_TRUE(isQueued());
    EXPECT_EQ(shot->position.x, 165.0F);
    graph->update(0.25F);
    graph->applyRemoveList();
    EXPECT_TRUE(graph->children.empty());
}

TEST_F(GameObjects, AnExplosionLastsASecondAndStaysWhereItIs)
{
    auto* explosion = new Billboard(1, {4.0F, 5.0F, 6.0F});
    graph->attach(explosion);
    explosion->velocity[0] = explosion->currentVelocity = {9.0F, 0.0F, 0.0F};
    for (int i = 0; i < 4; ++i) {
        graph->update(0.25F);
    }
    EXPECT_EQ(explosion->lifetime, 0.0F);
    EXPECT_FALSE(isQueued());
    EXPECT_EQ(explosion->position, Vector3(4.0F, 5.0F, 6.0F));
    graph->update(0.001F);
    EXPECT_TRUE(isQueued());
}

TEST_F(GameObjects, AnExplosionFacesTheCameraAsItWasAtItsCreation)
{
    const Quaternion view = Quaternion::FromAxisAngle(1.0F, {0.0F, 1.0F, 0.0F});
    VTEntryPoint::getInstance()->setCameraOrientation(view);
    const Billboard explosion(1);
    const Billboard placed(2, {1.0F, 2.0F, 3.0F});
    VTEntryPoint::getInstance()->setCameraOrientation(Quaternion());
    EXPECT_EQ(explosion.orientation, view);
    EXPECT_EQ(explosion.position, Vector3());
    EXPECT_EQ(placed.orientation, view);
    EXPECT_EQ(placed.position, Vector3(1.0F, 2.0F, 3.0F));
    EXPECT_EQ(placed.type, 2);
}

TEST_F(GameObjects, AnExplosionGivenAnOrientationTurnsItByAHundredAndEightyRadiansAndNormalises)
{
    const Quaternion twiceAboutX(0.0F, 2.0F, 0.0F, 0.0F);
    const Billboard explosion(3, {1.0F, 2.0F, 3.0F}, twiceAboutX);
    EXPECT_NEAR(explosion.orientation.length(), 1.0F, 1e-6F);
    // i * (cos 90 + j sin 90), the angle in radians
    EXPECT_NEAR(explosion.orientation.x, -0.4480736F, 1e-5F);
    EXPECT_NEAR(explosion.orientation.z, 0.8939967F, 1e-5F);
    EXPECT_EQ(explosion.position, Vector3(1.0F, 2.0F, 3.0F));
}

TEST_F(GameObjects, TheFactoryMakesExplosionsWithIdsFromTwoOn)
{
    SceneObjectFactory* factory = SceneObjectFactory::getInstance();
    for (const unsigned long long id : {2ULL, 3ULL}) {
        Transform* made = factory->create(2);
        ASSERT_NE(made, nullptr);
        EXPECT_EQ(made->id, id);
        EXPECT_EQ(made->type, 2);
        EXPECT_EQ(graph->getOBjectById(static_cast<long long>(id)), nullptr);
        factory->ship(made);
        EXPECT_EQ(graph->getOBjectById(static_cast<long long>(id)), made);
        EXPECT_EQ(made->parent, graph);
    }
}

TEST_F(GameObjects, TheFactoryMakesNothingElseAndSaysSo)
{
    for (const int type : {-1, 0, 1, 3, 77}) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(SceneObjectFactory::getInstance()->create(type), nullptr);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "Error creating type of " + std::to_string(type));
    }
}
