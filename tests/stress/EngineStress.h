#pragma once

namespace MorvaneStress {

// The stress on the real engine (mvn-stress --engine): `threads` threads make
// `calls` calls each on services of the render module while a render
// consumer reads a shared timeline back asynchronously. 0 when every
// picture read was one the timeline could have produced and nothing was
// lost or left behind, 1 otherwise, 2 when the engine did not start.
int runEngineStress(int threads, int calls);

}  // namespace MorvaneStress
