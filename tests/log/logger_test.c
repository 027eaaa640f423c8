/* Logging as a C program does it. */
#include "logger.h"

void log_from_c(Logger *logger);

void log_from_c(Logger *logger) {
  Logger_LogWarning(logger, "main@main.c:1", 5, "%s %d", "from C", 11);
}
