// The program in whose name the headers of the tests are precompiled. Nobody runs it.
int main() {}
