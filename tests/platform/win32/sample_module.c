// The module of module_test.cpp.
__attribute__((visibility("default"))) int SampleAnswer(int question);

int SampleAnswer(int question) {
    return 2 * question + 1;
}
