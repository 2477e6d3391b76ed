// A program of nothing: the headers that its target precompiles are those of all tests.
int main() { return 0; }
