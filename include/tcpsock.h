/**
 * @file tcpsock.h
 * IPv4 TCP sockets: connect, listen, accept, read, write and waits for readiness.
 *
 * A socket is a plain descriptor. Results are 0 or an errno value unless stated otherwise. Every descriptor
 * that is opened here is marked close-on-exec, so children get a connection only when it is handed to them.
 *
 * A write to a connection whose peer is gone raises SIGPIPE, as write() does: hosts ignore that signal and
 * look for EPIPE.
 *
 * All functions are re-entrant and keep no state.
 */
#ifndef ZORVCRT_TCPSOCK_H
#define ZORVCRT_TCPSOCK_H

#include <stdint.h>
#include <sys/socket.h>
#include <sys/time.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/** Does nothing; kept for callers that bracket their work with it. @return 0 */
ZFX_API int32_t ZfxStartNetwork(void);

/** Does nothing; the counterpart of ZfxStartNetwork(). */
ZFX_API void ZfxStopNetwork(void);

/**
 * Does not obtain a socket; kept for callers that ask.
 *
 * @param unused1 ignored
 * @param unused2 ignored
 * @param socket  receives 0; may be null
 * @param flag    receives 1; may be null
 * @return 0
 */
ZFX_API int32_t ZfxObtainSocket(int32_t unused1, int32_t unused2, int32_t *socket, int32_t *flag);

/**
 * Create a socket of any kind with the default protocol.
 *
 * @param domain address family (AF_INET, ...)
 * @param type   socket type (SOCK_STREAM, ...)
 * @return the socket, or -1 with errno set
 */
ZFX_API int32_t ZfxCreateSocket(int32_t domain, int32_t type);

/**
 * Close a socket.
 *
 * @param socket the socket. -1 and 0 are never closed: the result is then 0 and 1, the value plus one, so
 * that a socket that was never stored, or came from ZfxObtainSocket(), does not cost the host its standard
 * input.
 * @return otherwise the result of close(): 0, or -1 with errno set
 */
ZFX_API int32_t ZfxCloseSocket(int32_t socket);

/** Close a socket as ZfxCloseSocket() does and release a block.
 * @param socket as for ZfxCloseSocket()
 * @param block  as for ZfxMemFree(); may be null
 * @return as ZfxCloseSocket() */
ZFX_API int32_t ZfxCloseSocketEx(int32_t socket, void *block);

/**
 * Connect to a host.
 *
 * @param host   name or dotted address. A text that is no name the resolver knows is tried as the bytes of an
 *               address, which can succeed only for a text of four characters. Null fails with EINVAL.
 * @param port   port in host byte order; a value outside 0 to 65535 fails with EINVAL
 * @param socket receives the connected socket, with SO_KEEPALIVE set; left alone on failure. Null fails with
 *               EINVAL.
 * @return 0, or errno of the step that failed: ECONNREFUSED, ETIMEDOUT, EBADF when no descriptor was to be
 *         had, ... For a host that is not found it is what the resolver left in errno (EAGAIN when it got no
 *         answer, say), or EHOSTUNREACH when it left 0 there, which is what it does for an unknown name.
 *
 * Only the first address of the host is tried. There is no time limit but the system's own.
 */
ZFX_API int32_t ZfxCreateClientSocket(const char *host, int32_t port, int32_t *socket);

/**
 * Listen on all IPv4 addresses of the machine, with a backlog of 4096.
 *
 * @param socket receives the listening socket. On failure it holds the number of a descriptor that is closed
 *               again, or -1 when none could be opened. Null fails with EINVAL.
 * @param port   port in host byte order, taken also while connections of an earlier listener linger
 *               (SO_REUSEADDR); 0 for one that the system chooses. A value outside 0 to 65535 fails with
 *               EINVAL before anything is stored.
 * @return 0, or errno (EADDRINUSE, EACCES, EMFILE, ...)
 */
ZFX_API int32_t ZfxCreateListenSocket(int32_t *socket, int32_t port);

/**
 * Listen on a port that the system chooses.
 *
 * @param socket as for ZfxCreateListenSocket()
 * @param port   receives the port in host byte order, 0 on failure; may be null
 * @return 0, or errno
 */
ZFX_API int32_t ZfxCreateDynamicListenSocket(int32_t *socket, int32_t *port);

/**
 * Accept a connection.
 *
 * @param socket  a listening socket
 * @param address receives the peer's address; may be null
 * @param length  in: capacity of @p address in bytes; out: length of the address. May be null with @p
 * address.
 * @return the connection, or -1 with errno set (EINTR, EMFILE, EAGAIN on a non-blocking socket, ...)
 */
ZFX_API int32_t ZfxAccept(int32_t socket, struct sockaddr *address, socklen_t *length);

/** Accept a connection as ZfxAccept() does.
 * @param socket  as for ZfxAccept()
 * @param value   receives 0 in every case; may be null
 * @param address as for ZfxAccept()
 * @param length  as for ZfxAccept()
 * @return as ZfxAccept() */
ZFX_API int32_t ZfxAcceptEx(int32_t socket, uint64_t *value, struct sockaddr *address, socklen_t *length);

/**
 * Read what has arrived.
 *
 * @param socket the connection
 * @param buffer receives the bytes; null fails with EFAULT once there is something to read
 * @param length capacity of @p buffer in bytes
 * @return the number of bytes, which may be fewer than asked for; 0 at the end of the stream; -1 with errno
 * set
 */
ZFX_API int32_t ZfxSocketRead(int32_t socket, void *buffer, uint32_t length);

/**
 * Write bytes.
 *
 * @param socket the connection
 * @param buffer the bytes; null with a @p length fails with EFAULT
 * @param length number of bytes
 * @return the number of bytes written, which may be fewer than given; -1 with errno set
 */
ZFX_API int32_t ZfxSocketWrite(int32_t socket, const void *buffer, uint32_t length);

/**
 * Format a text and write it with one ZfxSocketWrite().
 *
 * @param socket the connection
 * @param format a printf format; null counts as empty
 * @return the result of the write; 0 without one when the text is empty or cannot be formatted
 *
 * At most 16383 bytes are sent; a longer text is cut there.
 */
ZFX_API int32_t ZfxSocketPrintf(int32_t socket, const char *format, ...) ZFX_PRINTF(2, 3);

/**
 * Wait until a socket can be read, or a connection accepted from it, without blocking.
 *
 * @param socket  any descriptor, also one at or above FD_SETSIZE
 * @param timeout how long to wait at most: seconds and microseconds, all zero to look once; null waits
 * without limit. As select() does on this system, it is changed to the time that was left.
 * @param error   receives an errno value as below; may be null
 * @return the result of select():
 *         - 0 when the time is up; 0 is stored
 *         - -1 on failure; errno is stored: EBADF for a descriptor that is not open, EINTR, EINVAL for a
 *           negative time, ENOMEM
 *         - otherwise the number of conditions that hold, 1 or 2. With an exceptional condition (urgent data)
 *           the current errno is stored, whatever it is; when the socket is only ready, 0.
 *
 * The end of the stream and a connection that failed count as ready: the next read tells.
 */
ZFX_API int32_t ZfxSocketReadSelect(int32_t socket, struct timeval *timeout, int32_t *error);

/**
 * Wait until a socket can be written without blocking; as ZfxSocketReadSelect(), with one difference that
 * callers rely on: with an exceptional condition the result is -1.
 */
ZFX_API int32_t ZfxSocketWriteSelect(int32_t socket, struct timeval *timeout, int32_t *error);

ZFX_END_DECLS

#endif
