// Put in front of a vertex shader whose kind always draws instances: the
// instance matrix is then read whatever the node's defines say.
#define KV_ALWAYS_INSTANCED
