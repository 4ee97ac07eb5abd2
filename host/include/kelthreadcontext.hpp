#pragma once

// The broker's context of a thread. Opaque: this library passes null wherever one is asked for.
class KelThreadContext;
