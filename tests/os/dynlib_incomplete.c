/* A library that cannot be loaded with all symbols resolved: one of them is nowhere. */
int defined_nowhere(void);
int incomplete_answer(void);

int incomplete_answer(void) {
  return defined_nowhere();
}
