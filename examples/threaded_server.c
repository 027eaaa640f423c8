/* A server with a thread for its clients: sockets to talk, an event to stop, a log line for each client. */
#include <signal.h>
#include <stdio.h>
#include <sys/socket.h>
#include <zorvcrt.h>

typedef struct Server {
  int32_t listener;
  ZfxEvent *served; /* set when a client has been served */
  Logger *logger;
} Server;

static void show_without_time(void *stream, const char *line) {
  fprintf(stream, "[%s", line + 21);
}

static int is_ready(int32_t socket, int32_t milliseconds) {
  struct timeval limit = {milliseconds / 1000, milliseconds % 1000 * 1000};
  int32_t error;
  return ZfxSocketReadSelect(socket, &limit, &error) == 1;
}

static void serve(const Server *server, int32_t client) {
  char name[64];
  int32_t count = is_ready(client, 5000) ? ZfxSocketRead(client, name, sizeof name - 1) : 0;
  name[count > 0 ? count : 0] = '\0';
  Logger_LogInfo(server->logger, "server", "serving %s", name);
  ZfxSocketPrintf(client, "welcome, %s", name);
  ZfxCloseSocket(client);
  ZfxSetEvent(server->served);
}

static void *accept_clients(void *record) {
  ZfxThread *thread = record;
  const Server *server = (const Server *)(uintptr_t)thread->userData;
  while (!ZfxCheckEvent(thread->stopEvent)) { /* looked at ten times a second */
    int32_t client = is_ready(server->listener, 100) ? ZfxAccept(server->listener, NULL, NULL) : -1;
    if (client >= 0) serve(server, client);
  }
  ZfxThreadCleanup(thread); /* the thread's last use of its record */
  return NULL;
}

static void visit(int32_t port, const char *name) {
  char answer[64];
  int32_t socket;
  if (ZfxCreateClientSocket("127.0.0.1", port, &socket) != 0) return;
  ZfxSocketPrintf(socket, "%s", name);
  int32_t count = ZfxSocketRead(socket, answer, sizeof answer);
  printf("%.*s\n", count > 0 ? (int)count : 0, answer);
  ZfxCloseSocket(socket);
}

int main(void) {
  int32_t port;
  Server server = {-1, ZfxCreateEvent(), Logger_New(LOGGER_LEVEL_INFO, NULL, 0)};
  signal(SIGPIPE, SIG_IGN); /* a client that is gone is no reason to end */
  Logger_SetCallback(server.logger, show_without_time, stdout);
  if (ZfxCreateDynamicListenSocket(&server.listener, &port) != 0) return 1;
  ZfxThread *thread = ZfxCreateThread(accept_clients, (uint64_t)(uintptr_t)&server);
  if (thread == NULL) return 1;

  const char *names[] = {"ann", "bob"};
  for (int i = 0; i < 2; i++) {
    ZfxResetEvent(server.served);
    visit(port, names[i]);
    if (!ZfxWaitEvent(server.served, 5)) return 1; /* the wait spins: for short times only */
  }
  ZfxTerminateThread(thread); /* sets its stopEvent, waits for it and releases the record */
  ZfxCloseSocket(server.listener);
  ZfxCloseEvent(server.served);
  Logger_Delete(server.logger);
  return 0;
}
