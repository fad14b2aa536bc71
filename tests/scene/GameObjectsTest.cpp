#include "scene/Billboard.h"
#include "scene/Projectile.h"
#include "scene/SceneObjectFactory.h"
#include "scene/TestCube.h"
#include "tests/engine/FreshWorld.h"

using GameObjects = FreshWorld;

TEST_F(GameObjects, AreScaledThenMovedThenTurned)
{
    constexpr float quarterTurn = 1.5707964F;
    Transform node(1U, 2U);
    node.scale(1.0F, 3.0F, 2.0F);
    node.scale({2.0F, 1.0F, 2.0F});
    node.translate(1.0F, 5.0F, 6.0F);
    node.rotate(quarterTurn, {0.0F, 1.0F, 0.0F});
    node.rotate(quarterTurn, {1.0F, 0.0F, 0.0F});  // the later turn acts first: +y goes to +z and on to +x
    node.applyTransformation();
    EXPECT_EQ(glRecorder.take(),
              "glScalef 2 3 4\nglTranslatef 1 5 6\nglMultMatrixf 0 0 -1 0 1 0 0 0 0 -1 0 0 0 0 0 1\n");
    EXPECT_EQ(node.id, 0x100000002ULL);
}

// The other objects' calls are compared in tests/end_to_end.
TEST_F(GameObjects, AnExplosionIsAQuadOfTenUnitsCentredByAHalfTurn)
{
    resources->textures["BOOOM.png"] = 13;
    Billboard(1).realDraw();
    EXPECT_EQ(glRecorder.take(), script(R"(glPushMatrix; glTranslatef 5 5 0; glRotatef 180 0 0 1;
        glColor3f 1 1 1; glBindTexture GL_TEXTURE_2D 13; glBegin GL_QUADS; glTexCoord2f 0 1; glVertex3f 0 10 0;
        glTexCoord2f 1 1; glVertex3f 10 10 0; glTexCoord2f 1 0; glVertex3f 10 0 0; glTexCoord2f 0 0;
        glVertex3f 0 0 0; glEnd; glPopMatrix)"));
}

TEST_F(GameObjects, ACarrierStaysWhateverTheServerSays)
{
    TestCube carrier(7, true, true);
    Vector3 elsewhere(100.0F, 0.0F, 0.0F);
    Quaternion turned(0.0F, 1.0F, 0.0F, 0.0F);
    carrier.updateInfo(1000, elsewhere, turned, true);
    carrier.update(1.0F);
    EXPECT_EQ(carrier.position, Vector3());
    EXPECT_EQ(carrier.orientation, Quaternion());
}

TEST_F(GameObjects, AShotLeavesBelowNoLifetimeAndMovesInThatFrameToo)
{
    auto* shot = new Projectile(1ULL);
    graph->attach(shot);
    Vector3 start(3.0F, 0.0F, 0.0F);
    shot->updateInfo(0, start, shot->orientation, true);
    shot->currentVelocity = {8.0F, 0.0F, 0.0F};
    graph->update(20.0F);
    EXPECT_TRUE(graph->removeList.empty());
    EXPECT_EQ(shot->position.x, 163.0F);
    graph->update(0.25F);
    EXPECT_EQ(graph->removeList.size(), 1U);
    EXPECT_EQ(shot->position.x, 165.0F);
}

TEST_F(GameObjects, AnExplosionFacesTheCameraOfItsCreationAndStaysForASecond)
{
    const Quaternion view = Quaternion::FromAxisAngle(1.0F, {0.0F, 1.0F, 0.0F});
    controller->setCameraOrientation(view);
    auto* explosion = new Billboard(1, {4.0F, 5.0F, 6.0F});
    controller->setCameraOrientation(Quaternion());
    graph->attach(explosion);
    explosion->currentVelocity = {9.0F, 0.0F, 0.0F};
    graph->update(0.5F);
    graph->update(0.5F);
    EXPECT_TRUE(graph->removeList.empty());
    EXPECT_EQ(explosion->position, Vector3(4.0F, 5.0F, 6.0F));
    EXPECT_EQ(explosion->orientation, view);
    graph->update(0.001F);
    EXPECT_EQ(graph->removeList.size(), 1U);

    // one given an orientation: i * (cos 90 + j sin 90), the angle in radians, and normalised
    expectNear(Billboard(3, {}, {0, 2, 0, 0}).orientation, {0, -0.4480736F, 0, 0.8939967F});
}

TEST_F(GameObjects, TheFactoryMakesExplosionsWithIdsFromTwoOnAndNothingElse)
{
    SceneObjectFactory* factory = SceneObjectFactory::getInstance();
    for (const long long id : {2, 3}) {
        Transform* made = factory->create(SGT_BILLBOARD);
        EXPECT_EQ(made->type, SGT_BILLBOARD);
        factory->ship(made);
        EXPECT_EQ(graph->getOBjectById(id), made);
    }
    testing::internal::CaptureStdout();
    EXPECT_EQ(factory->create(SGT_PROJECTILE), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Error creating type of 1");
}
