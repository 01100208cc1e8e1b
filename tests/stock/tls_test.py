"""tls_test.py STOCK [EMULATOR]: the example host must not talk to a service whose certificate nobody vouches for."""
import pathlib
import shutil
import socket
import ssl
import subprocess
import sys
import tempfile
import threading

SKIPPED = 77


def serve(listener, context, heard):
    while True:
        try:
            connection, _ = listener.accept()
        except OSError:  # shut down
            return
        try:
            with context.wrap_socket(connection, server_side=True) as stream:
                heard.append(stream.recv(1))
        except (OSError, ssl.SSLError) as refused:
            heard.append(refused)


def main():
    host = sys.argv[2:] + sys.argv[1:2]
    if sys.argv[2:] or not shutil.which("openssl"):  # the emulator's system library verifies nothing by itself
        return SKIPPED
    with tempfile.TemporaryDirectory() as folder:
        key, certificate = pathlib.Path(folder, "key.pem"), pathlib.Path(folder, "certificate.pem")
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", "/CN=127.0.0.1",
                        "-addext", "subjectAltName=IP:127.0.0.1", "-keyout", key, "-out", certificate],
                       check=True, capture_output=True)
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(certificate, key)
        listener = socket.create_server(("127.0.0.1", 0))
        heard = []
        service = threading.Thread(target=serve, args=(listener, context, heard), daemon=True)
        service.start()
        url = f"https://127.0.0.1:{listener.getsockname()[1]}"
        run = subprocess.run([*host, url, "title"], capture_output=True, text=True, timeout=120)
        listener.shutdown(socket.SHUT_RDWR)
        service.join()  # it may hear of the refusal after the host has ended
    spoke = any(isinstance(what, bytes) and what for what in heard)
    if run.returncode != 1 or not run.stderr.startswith("stock: ") or not heard or spoke:
        print(run.returncode, run.stdout, run.stderr, heard)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
