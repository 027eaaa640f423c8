/* A library to be loaded: a function and a variable. */
int sample_value = 7;

int sample_answer(void);
int sample_answer(void) {
  return 42 + sample_value - 7;
}
