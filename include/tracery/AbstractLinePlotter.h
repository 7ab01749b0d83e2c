#pragma once

#include <tracery/export.h>
#include <tracery/host/HostArray.h>

#include <cstddef>

namespace tracery {

/// Base of all plotters: the axes and the lines that a display draws into. Works without a host. Main thread only.
///
/// The arrays are owned, and with them their objects: where one of these refers to the display's own host object, only
/// deleting that breaks the circle.
class TRACERY_EXPORT AbstractLinePlotter {
public:
    AbstractLinePlotter() = default;
    virtual ~AbstractLinePlotter();
    AbstractLinePlotter(const AbstractLinePlotter&) = delete;
    AbstractLinePlotter& operator=(const AbstractLinePlotter&) = delete;

    /// Called when the lines have changed; does nothing here.
    virtual void initPlotter();

    /// Keeps a copy; null is ignored.
    void setAxes(const HostArray* axes);
    /// A new copy that the caller owns; null before any were set.
    HostArray* getAxes() const;

    /// Keeps a copy and calls initPlotter(), and has the old lines again when that throws; null is ignored.
    void setLines(const HostArray* lines);
    /// A new copy that the caller owns; null before any were set.
    HostArray* getLines() const;
    /// Elements of the lines array; 0 before any were set.
    std::size_t getNumLines() const;

    /// Whether the axes go with the display; kept for the owner.
    void setDeleteAxes(bool deleteAxes) { deleteAxes_ = deleteAxes; }
    bool getDeleteAxes() const { return deleteAxes_; }

    /// Destroys what getAxes or getLines returned; null is ignored, and so are the arrays that the plotter holds.
    void destroyHostArrayObtainedFromGet(HostArray* array) noexcept;

protected:
    /// The lines themselves, null before any were set; valid until the next setLines.
    const HostArray* lines() const noexcept { return lines_.get(); }

private:
    HostArrayPtr axes_;
    HostArrayPtr lines_;
    bool deleteAxes_ = false;
};

} // namespace tracery
