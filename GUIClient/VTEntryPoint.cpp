#include "GUIClient/VTEntryPoint.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "GUIClient/Helpers.h"
#include "engine/Engine.h"
#include "network/Messages.h"
#include "network/PacketSender.h"
#include "scene/General.h"
#include "scene/SceneGraph.h"
#include "scene/TestCube.h"

#include <algorithm>
#include <utility>

VTEntryPoint* VTEntryPoint::instance = nullptr;

namespace {

constexpr float sendInterval = 0.05F;         // seconds
constexpr double radiansPerPixel = -0.005;    // of mouse motion
constexpr unsigned int fireBit = 0x40000000;  // the left mouse button
constexpr std::pair<SDLKey, unsigned int> controls[] = {{SDLK_w, 1}, {SDLK_s, 2},      {SDLK_d, 4},
                                                        {SDLK_a, 8}, {SDLK_SPACE, 16}, {SDLK_c, 32}};

float mouseAngle(float pixels)
{
    return static_cast<float>(static_cast<double>(pixels) * radiansPerPixel);
}

unsigned int sampleControls(const VT_InputHandler& input)
{
    unsigned int bits = 0;
    for (const auto& [key, bit] : controls) {
        bits |= input.isKeyPressed(key) ? bit : 0U;
    }
    return bits | (input.isLMouseDown() ? fireBit : 0U);
}

TestCube* placeCarrier(bool blueTeam, Vector3 at)
{
    auto* carrier = new TestCube(0, true, blueTeam);
    carrier->translate(at);
    SceneGraph::getInstance()->attach(carrier);
    return carrier;
}

// If a server destroyed the carrier, the scene has already deleted it, and its list no longer holds it.
void deleteCarrier(TestCube* carrier)
{
    const auto* carriers = SceneGraph::getInstance()->getListOfType(SGT_CARRIER);
    if (carriers != nullptr && std::find(carriers->begin(), carriers->end(), carrier) != carriers->end()) {
        delete carrier;
    }
}

}  // namespace

VTEntryPoint* VTEntryPoint::getInstance()
{
    if (instance == nullptr) {
        instance = new VTEntryPoint;
    }
    return instance;
}

VTEntryPoint::~VTEntryPoint()
{
    deleteCarrier(redCarrier);
    deleteCarrier(blueCarrier);
}

void VTEntryPoint::init()
{
    VT.setSkyBox("skybox.png");
    VT.inputHandler.subscribeToKeyboardEvents(this);
    redCarrier = placeCarrier(false, General::getInstance()->redStart());
    blueCarrier = placeCarrier(true, General::getInstance()->blueStart());
}

void VTEntryPoint::update(float dt)
{
    static float totalTime = 0.0F;
    updateMouse();
    rollCamera(dt);
    totalTime += dt;
    if (totalTime >= sendInterval) {
        sendInput();
        totalTime = 0.0F;
    }
}

void VTEntryPoint::updateMouse()
{
    const auto [dx, dy] = VT.getMouseDiff();
    camera.yaw(mouseAngle(dx));
    camera.pitch(mouseAngle(dy));
}

void VTEntryPoint::rollCamera(float dt)
{
    if (VT.inputHandler.isKeyPressed(SDLK_e)) {
        camera.roll(dt);
    }
    if (VT.inputHandler.isKeyPressed(SDLK_q)) {
        camera.roll(-dt);
    }
}

void VTEntryPoint::sendInput()
{
    Vantor::ClientUpdate update;
    update.set_boosterson(sampleControls(VT.inputHandler));
    messages::set(*update.mutable_orientation(), camera.getOrientation());
    PacketSender::getInstance()->send(update);
}

void VTEntryPoint::keyboardEvent(SDL_Event event)
{
    if (event.key.keysym.sym == SDLK_ESCAPE) {
        Helpers::stop();
    }
}
