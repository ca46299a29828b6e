// A program that is built without any of what hardened.sh looks for.

int main() { return 0; }
