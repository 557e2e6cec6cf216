// Does nothing: only the loading of the linked libraries is measured.
int main() {
  return 0;
}
