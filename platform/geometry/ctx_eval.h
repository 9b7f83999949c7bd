#pragma once

// Evaluation context handed to every geometry query: the moment at which the
// geometry is looked at. Objects whose vertices move (see GeometryMesh) place
// them at m_time; static objects ignore the context. A plain record, created
// and owned by the caller, read-only for the geometry.
struct CtxEval {
  // Time within the shutter interval, in the unit the caller's velocities
  // use (typically 0 at shutter open and 1 at shutter close).
  double m_time;

  CtxEval() : m_time() {}
  explicit CtxEval(double const& time) : m_time(time) {}
};
