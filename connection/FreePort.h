#pragma once

// A TCP port on 127.0.0.1 that nobody listens on at the moment of asking, or -1.
// The port is released again before returning, so another process may still take it first.
int findFreeLocalPort();
