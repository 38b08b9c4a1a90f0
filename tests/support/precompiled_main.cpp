// The program that the precompiled headers of the tests belong to; it is never run.
int main() {
  return 0;
}
