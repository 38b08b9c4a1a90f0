// The tests' precompiled headers belong to this program. It is never run.
int main() {
  return 0;
}
