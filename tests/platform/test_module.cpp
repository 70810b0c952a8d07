extern "C" __attribute__((visibility("default"))) int answer() {
    return 42;
}
