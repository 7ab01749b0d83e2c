#pragma once

/// The crossing rules that the edge and the timeout detector share. Each is called once a sample, in order,
/// with the sample's value, and tells whether the level is crossed there. The flags belong to the detector
/// and outlive a block.
namespace tracery {

/// Below level - hysteresis arms; armed and above the level crosses.
struct RisingCrossing {
    bool& armed;
    double level;
    double armBelow;

    bool operator()(double x) const
    {
        if (x < armBelow) {
            armed = true;
        } else if (armed && x > level) {
            armed = false;
            return true;
        }
        return false;
    }
};

/// Above level + hysteresis arms; armed and below the level crosses.
struct FallingCrossing {
    bool& armed;
    double level;
    double armAbove;

    bool operator()(double x) const
    {
        if (x > armAbove) {
            armed = true;
        } else if (armed && x < level) {
            armed = false;
            return true;
        }
        return false;
    }
};

/// Both at once, at most one crossing a sample and the rising one first. A leap over both arming levels
/// crosses one way and arms the other.
struct EitherCrossing {
    bool& armedPositive;
    bool& armedNegative;
    double level;
    double armBelow;
    double armAbove;

    bool operator()(double x) const
    {
        if (x < armBelow)
            armedPositive = true;
        else if (x > armAbove)
            armedNegative = true;

        if (armedPositive && x > level) {
            armedPositive = false;
            return true;
        }
        if (armedNegative && x < level) {
            armedNegative = false;
            return true;
        }
        return false;
    }
};

} // namespace tracery
