/* Read a configuration file, let a folder override it and split a value. */
#include <stdio.h>
#include <zorvcrt.h>

static int write_text(const char *path, const char *text) {
  FILE *file = fopen(path, "w");
  if (file == NULL) return -1;
  fputs(text, file);
  return fclose(file);
}

static int32_t print_host(void *user_data, const char *token) {
  printf("%s %s\n", (const char *)user_data, token);
  return 0;
}

int main(int count, char **arguments) {
  char path[1024];
  char label[] = "host:";
  Config *config;
  ConfigSection *server;

  if (count < 2) return 2;
  snprintf(path, sizeof path, "%s/conf.d", arguments[1]);
  if (CreatePath(path) != 0) return 1;
  snprintf(path, sizeof path, "%s/conf.d/site.conf", arguments[1]);
  if (write_text(path, "[server]\nport = 9000\nunknown = 1\n") != 0) return 1;
  snprintf(path, sizeof path, "%s/main.conf", arguments[1]);
  if (write_text(path, "ConfigDir = conf.d\n[Server]\nport = 80\nhosts = alpha, ,beta\n") != 0) return 1;

  if ((config = Config_Open(path)) == NULL) return 1;
  Config_DirOpen(config, NULL, NULL);
  server = Config_GetSection(config, "server");
  printf("port: %s\n", Config_GetEntry(server, "PORT")->value);
  printf("unknown: %s\n", Config_GetEntry(server, "unknown") == NULL ? "not added" : "added");
  Config_TokenizeValue(Config_GetEntry(server, "hosts"), ',', print_host, label);
  Config_Close(config);
  return 0;
}
