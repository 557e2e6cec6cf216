// A program that does nothing but being loaded, with what it is linked to.
int main() {
  return 0;
}
