#pragma once

// The backend is compiled with hidden visibility: only what carries this
// mark (and cmake/TarnwickOSG.map lists) is seen by the host that loads it.
#define KV_BACKEND_EXPORT __attribute__((visibility("default")))
