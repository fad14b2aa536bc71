#pragma once

#include "math/Matrix3.h"
#include "math/Quaternion.h"
#include "math/Vector3.h"
#include "scene/SceneGraphType.h"

#include <list>

/// A node of the scene: an object with a pose, children, and the state that smooths its networked motion.
///
/// Main thread only. A node owns its children, but its destructor deletes none of them:
/// SceneGraph::applyRemoveList removes objects, and destroyChildren takes a whole branch down. Positions are
/// in world units, times in seconds, server times in milliseconds of the server's clock (32 bits, wrapping).
///
/// Motion: states from the server arrive at irregular intervals. From three of them come a velocity and its
/// change; for half a second after each state the shown position blends from where it was to where the server
/// will see the object by then, and after that it extrapolates (dead reckoning; Aronson, "Dead Reckoning:
/// Latency Hiding for Networked Games", 1997).
class Transform
{
public:
    explicit Transform(unsigned long long id);
    /// The id is high * 2^32 + low.
    Transform(unsigned int high, unsigned int low);
    virtual ~Transform() = default;

    /// Draws the node itself, inside its own matrix.
    virtual void realDraw() {}
    /// Advances the node itself by dt seconds; here: smoothPosition, which subclasses copy to position or do
    /// not.
    virtual void realUpdate(float dt);
    /// The keys in the scene graph's tables of players; here the object's own address.
    virtual long long getUDPid();
    virtual void* getTCPid();
    /// Takes one state of the server: a full one (`reset`), which is shown at once, or the next in a row.
    /// `time` in server milliseconds. Position and orientation are only read.
    virtual void updateInfo(unsigned int time, Vector3& newPosition, Quaternion& newOrientation, bool reset);

    void init();

    /// Appends `child`, whose type must be final, and files it in the scene graph.
    void attach(Transform* child);
    /// Advances this node, then its children in order.
    void update(float dt);
    /// Draws this node, then its children in order, each inside its parent's matrix.
    void draw();
    /// Multiplies scale, translation and rotation, in this order, onto the current matrix: scale scales
    /// translation.
    void applyTransformation();
    Matrix3 getRotationMatrix() const { return orientation.toRotationMatrix(); }

    void translate(float dx, float dy, float dz) { translate(Vector3(dx, dy, dz)); }
    void translate(Vector3 v) { position += v; }
    void scale(float fx, float fy, float fz) { scale(Vector3(fx, fy, fz)); }
    void scale(Vector3 v);
    /// Turns by q first and by the present orientation after it; the result is not normalised.
    void rotate(Quaternion q) { orientation = orientation * q; }
    /// angle in radians.
    void rotate(float angle, Vector3 axis) { rotate(Quaternion::FromAxisAngle(angle, axis)); }

    /// Deletes all children and theirs. The list keeps its dangling pointers: only for a node about to be
    /// deleted.
    void destroyChildren();

    /// Records one state of the server in the motion state below.
    void updateLast(unsigned int time, Vector3& newPosition, Quaternion& newOrientation, bool reset);

    static constexpr float blendPeriod =
        0.5F;  ///< seconds; longer than the server's longest silence in normal play
    static constexpr float snapDistance =
        10.0F;  ///< world units; a larger error would look like sliding, so we jump

    SceneGraphType type = SGT_NONE;
    bool queuedForRemoval = false;  ///< the scene graph's note that this object is in its remove list
    Transform* parent = nullptr;    ///< not owned; null for the root and for detached objects
    std::list<Transform*> children;
    unsigned long long id;
    Vector3 position;           ///< as drawn, and as collisions see it
    Vector3 scaleFactors;       ///< per axis; 1 by default
    Quaternion orientation;     ///< as drawn, and as collisions see it
    Vector3 spare;              ///< no operation of the scene reads it
    Vector3 velocity[2];        ///< units per second, measured between the newest two states, and before that
    Vector3 currentVelocity;    ///< the velocity being extrapolated
    Vector3 acceleration;       ///< velocity[0] - velocity[1] at the newest state, applied per second
    Vector3 smoothPosition;     ///< the smoothed position
    Vector3 correction;         ///< the newest server position minus smoothPosition, as that state arrived
    Vector3 blendStart;         ///< smoothPosition as the newest state arrived
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
