// A small module that the tests load as a plug-in.
extern "C" __attribute__((visibility("default"))) int VbuTestPluginAnswer() { return 42; }
