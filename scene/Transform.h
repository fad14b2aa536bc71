#pragma once

#include "math/Matrix3.h"
#include "math/Quaternion.h"
#include "math/Vector3.h"
#include "scene/SceneGraphType.h"

#include <list>

/// A node of the scene: an object with a pose, children, and the state that smooths its networked motion.
///
/// Main thread only. A node owns its children, but its destructor deletes none of them:
/// SceneGraph::applyRemoveList removes objects, and destroyChildren deletes a whole branch. Positions are in
/// world units, times in seconds, server times in milliseconds of the server's clock (32 bits, wrapping).
///
/// Motion: states from the server arrive at irregular intervals. Three of them give a velocity and its
/// change. For half a second after each state the shown position blends towards the object's predicted
/// position. After that it extrapolates (dead reckoning; Aronson, "Dead Reckoning: Latency Hiding for
/// Networked Games", 1997).
class Transform
{
public:
    explicit Transform(unsigned long long id);
    /// The id is high * 2^32 + low.
    Transform(unsigned int high, unsigned int low);
    virtual ~Transform() = default;

    /// Draws the node itself, inside its own matrix.
    virtual void realDraw() {}
    /// Advances the node itself by dt seconds. Here that is smoothPosition alone; moving subclasses copy it
    /// to position.
    virtual void realUpdate(float dt);
    /// The object's keys in the scene graph's two tables of players: here its own address.
    virtual long long getUDPid();
    virtual void* getTCPid();
    /// Takes one state from the server. A full one (`reset`) is shown at once, any other is blended in.
    /// `time` is in server milliseconds. Position and orientation are only read.
    virtual void updateInfo(unsigned int time, Vector3& newPosition, Quaternion& newOrientation, bool reset);

    void init();

    /// Appends `child`, whose type must be final, and files it in the scene graph.
    void attach(Transform* child);
    /// Advances this node, then its children in order.
    void update(float dt);
    /// Draws this node, then its children in order, each inside its parent's matrix.
    void draw();
    /// Multiplies scale, translation and rotation, in this order, onto the current matrix. So the scale also
    /// scales the translation.
    void applyTransformation();
    Matrix3 getRotationMatrix() const { return orientation.toRotationMatrix(); }

    void translate(float dx, float dy, float dz) { translate(Vector3(dx, dy, dz)); }
    void translate(Vector3 v) { position += v; }
    void scale(float fx, float fy, float fz) { scale(Vector3(fx, fy, fz)); }
    void scale(Vector3 v);
    /// Sets orientation to orientation * q, so q acts first. The result is not normalised.
    void rotate(Quaternion q) { orientation = orientation * q; }
    /// angle in radians.
    void rotate(float angle, Vector3 axis) { rotate(Quaternion::FromAxisAngle(angle, axis)); }

    /// Deletes all children and their children. The list keeps dangling pointers, so call it only on a node
    /// that is about to be deleted.
    void destroyChildren();

    /// Records one state of the server in the motion state below.
    void updateLast(unsigned int time, Vector3& newPosition, Quaternion& newOrientation, bool reset);

    static constexpr float blendPeriod = 0.5F;  ///< seconds to blend after a state; then extrapolate
    static constexpr float snapDistance =
        10.0F;  ///< world units; blending a larger error would look like sliding

    SceneGraphType type = SGT_NONE;
    bool queuedForRemoval = false;  ///< set by the scene graph: this object is in its remove list
    Transform* parent = nullptr;    ///< not owned; null for the root and for detached objects
    std::list<Transform*> children;
    unsigned long long id;
    Vector3 position;         ///< used for drawing and collision
    Vector3 scaleFactors;     ///< per axis; 1 by default
    Quaternion orientation;   ///< used for drawing and collision
    Vector3 spare;            ///< unused
    Vector3 velocity[2];      ///< units per second: [0] between the newest two states, [1] measured before it
    Vector3 currentVelocity;  ///< units per second, the extrapolated velocity
    Vector3 acceleration;     ///< velocity[0] - velocity[1] at the newest state, applied per second
    Vector3 smoothPosition;   ///< the smoothed position
    Vector3 correction;       ///< newest server position minus smoothPosition, when that state arrived
    Vector3 blendStart;       ///< smoothPosition when the newest state arrived
    float timeSinceUpdate = 0;  ///< seconds since the newest state
    Quaternion smoothOrientation;
    unsigned int serverTime[3] = {};  ///< milliseconds; [0] is the newest
    Vector3 serverPosition[3];
    Quaternion serverOrientation[3];

private:
    void rememberAll(unsigned int time, const Vector3& newPosition, const Quaternion& newOrientation);
    void shiftHistory(unsigned int time, const Vector3& newPosition, const Quaternion& newOrientation);
    Vector3 measuredVelocity() const;
    void snap(unsigned int time, const Vector3& newPosition, const Quaternion& newOrientation);
};
