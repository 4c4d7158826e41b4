#!/usr/bin/env python3
"""Other programs judge what cryptotool writes, and cryptotool judges what they write:  judges_test.py PROGRAM [ARGUMENT...]

PROGRAM with its arguments starts the tool. The judges are those of OpenSSL, GnuTLS and NSS. Each row is run on a file, and again after a
byte of that file was changed, which the judge must notice.
"""

import base64
import concurrent.futures
import hashlib
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

CONTENT = b"what was signed, or encrypted\n" * 40
DIGESTS = [hashlib.new(name, CONTENT).digest() for name in ("sha256", "sha384", "sha512")]
OPENSSL_CHAIN = "-CAfile root.pem -purpose any"
CMS_JUDGES = (
    f"openssl cms -verify -cades -binary -inform DER -in {{}} -content content -out /dev/null {OPENSSL_CHAIN}",
    "certtool --p7-verify --inder --infile {} --load-data content --load-ca-certificate root.pem",
)
CMS_EMBEDDED_JUDGES = (
    f"openssl cms -verify -cades -binary -inform DER -in {{}} {OPENSSL_CHAIN} | cmp - content",
    "certtool --p7-verify --inder --infile {} --load-ca-certificate root.pem",
)
CMS_KINDS = [
    ("ec", "--hash sha256"),
    ("ec", "--hash sha384 --signing-time --algorithm-protection --crl sub.crl --revocation pdf"),
    ("ec", "--hash sha512 --crl sub.crl --ocsp response --revocation etsi"),
    ("ec", "--hash sha256 --algorithm-protection --embed"),
    ("rsa", "--hash sha256 --algorithm-protection"),
    ("rsa", "--hash sha256 --signing-time --ocsp response --revocation pdf"),
    ("rsa", "--hash sha384 --signing-time --algorithm-protection --embed"),
    ("rsa", "--hash sha512 --crl sub.crl --ocsp response --revocation etsi"),
]
ENVELOPE_KINDS = [f"--cipher aes-{bits}-cbc {more}" for bits, more in
                  ((128, ""), (192, ""), (256, ""), (128, "--oaep sha1"), (192, "--oaep sha256"), (256, "--oaep sha384"),
                   (256, "--oaep sha512"))]
# What programs read of the schemes. None reads pbmac1 yet.
STORE_KINDS = {
    "--cipher aes-128-cbc": "openssl gnutls nss",
    "--cipher aes-192-cbc": "openssl gnutls nss",
    "--cipher aes-256-cbc": "openssl gnutls nss",
    "--cipher des-ede3-cbc": "openssl gnutls nss",
    "--scheme sha1-3des": "openssl gnutls nss",
    "--scheme sha1-2des": "openssl nss",
    "--scheme sha1-rc2-128": "openssl nss",
    "--scheme sha1-rc2-40": "openssl gnutls nss",
    "--scheme sha1-rc4-128": "openssl gnutls nss",
    "--scheme sha1-rc4-40": "openssl nss",
}
STORE_JUDGES = {
    "openssl": "openssl pkcs12 -legacy -in {} -passin file:password -nodes | grep -A1 'friendlyName: Avain'",
    "gnutls": "certtool --p12-info --inder --infile {} --password secret --outfile {}.info && grep -c 'BEGIN CERT' {}.info | grep -x 2 && "
              "sed -n '/BEGIN ENC/,/END ENC/p' {}.info | certtool --key-info --pkcs8 --password secret | grep 'Public Key ID'",
    "nss": "pk12util -l {} -d sql:nss -w password | grep 'Friendly Name: Avain'",
}

# What the tool makes: commands, one after the other.
SETUP = """
for name in root ec responder; do cryptotool key gen prime256v1 -o $name.key; done
for name in sub rsa; do cryptotool key gen rsa --bits 2048 -o $name.key; done
cryptotool cert build root.key --subject 'CN=Root, C=FI' --is-ca -o root.pem
issue() {
    name=$1 ca=$2; shift 2
    cryptotool csr build $name.key --subject "CN=Judged $name, C=FI" --san DNS:$name.example -o $name.csr
    cryptotool cert build $name.csr --ca $ca.pem --ca-key $ca.key --copy-extensions -o $name.pem "$@"
}
issue sub root --is-ca --serial 1000
issue ec sub --key-usage digitalSignature --eku emailProtection --serial 1001
issue rsa sub --key-usage digitalSignature --key-usage keyEncipherment --serial 1002
issue responder sub --key-usage digitalSignature --eku OCSPSigning
cryptotool crl build --ca root.pem --ca-key root.key -o root.crl
cryptotool crl build --ca sub.pem --ca-key sub.key --number 7 --revoke 1003,keyCompromise -o sub.crl
cryptotool ocsp request --issuer sub.pem ec.pem rsa.pem --serial 1003 -o request
cryptotool ocsp respond --ca sub.pem --crl sub.crl --signer responder.pem --key responder.key request -o response
cat root.crl sub.crl >both.crl
cat sub.pem root.pem >issuers.pem
mkdir nss
certutil -N -d sql:nss --empty-password
"""

# What the others make.
THEIR_SETUP = """
openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -subj '/C=FI/CN=Their\\, root' -keyout t.key -out t.pem \
    -addext keyUsage=critical,digitalSignature,keyCertSign,cRLSign
openssl req -new -newkey rsa:2048 -nodes -keyout r.key -subj /CN=Their -addext subjectAltName=DNS:x.example -out r.csr
openssl x509 -req -in r.csr -CA t.pem -CAkey t.key -set_serial 0x2001 -copy_extensions copyall -out r.pem
printf '[ca]\\ndefault_ca = c\\n[c]\\ndatabase = index\\ncrlnumber = number\\ndefault_md = sha256\\ndefault_crl_days = 30\\n' >ca.conf
printf 'R\\t491231235959Z\\t260102030405Z,keyCompromise\\t2003\\tunknown\\t/CN=x\\nV\\t491231235959Z\\t\\t2001\\tunknown\\t/CN=Their\\n' >index
echo 07 >number
openssl ca -gencrl -config ca.conf -keyfile t.key -cert t.pem -out t.crl
openssl ocsp -issuer t.pem -cert r.pem -reqout t.request
openssl ocsp -index index -CA t.pem -rsigner t.pem -rkey t.key -ndays 1 -resp_no_certs -reqin t.request -respout t.response
cryptotool ocsp request --issuer t.pem r.pem -o our.request
openssl ocsp -index index -CA t.pem -rsigner t.pem -rkey t.key -ndays 1 -resp_no_certs -reqin our.request -respout t.answer
openssl cms -sign -cades -binary -in content -signer t.pem -inkey t.key -outform DER -out t.cades
openssl cms -sign -nodetach -stream -binary -in content -signer r.pem -inkey r.key -md sha512 -outform DER -out t.streamed
openssl cms -sign -nodetach -binary -in content -signer r.pem -inkey r.key -keyopt rsa_padding_mode:pss -outform DER -out t.pss
certtool --p7-detached-sign --p7-time --outder --infile content --load-certificate r.pem --load-privkey r.key --outfile t.gnutls
openssl cms -encrypt -binary -in content -aes-128-cbc -outform DER -out t.pkcs1 r.pem
openssl cms -encrypt -binary -stream -in content -aes-256-cbc -outform DER -out t.oaep -recip r.pem -keyopt rsa_padding_mode:oaep \
    -keyopt rsa_oaep_md:sha256
openssl pkcs12 -export -inkey r.key -in r.pem -certfile t.pem -name Theirs -passout file:password -out t.p12
openssl pkcs12 -export -legacy -inkey r.key -in r.pem -certfile t.pem -name Theirs -passout file:password -out t.legacy.p12
certtool --to-p12 --load-privkey r.key --load-certificate r.pem --load-ca-certificate t.pem --p12-name Theirs --password secret \
    --outder --outfile t.gnutls.p12
mkdir their.nss
certutil -N -d sql:their.nss --empty-password
pk12util -i t.p12 -d sql:their.nss -w password
pk12util -o t.nss.p12 -n Theirs -d sql:their.nss -w password
pk12util -o t.nss.legacy.p12 -n Theirs -d sql:their.nss -w password -c 'PKCS #12 V2 PBE With SHA-1 And 3KEY Triple DES-CBC' \
    -C 'PKCS #12 V2 PBE With SHA-1 And 40 Bit RC2 CBC'
printf 'cn = Gnu\\nexpiration_days = 30\\ncrl_next_update = 30\\ncrl_number = 5\\nsigning_key\\ncert_signing_key\\ncrl_signing_key\\nca\\n' >gnu.cfg
printf 'cn = Gnu leaf\\nexpiration_days = 30\\n' >h.cfg
certtool --generate-privkey --key-type ecdsa --outfile g.key
certtool --generate-self-signed --load-privkey g.key --template gnu.cfg --outfile g.pem
certtool --generate-request --load-privkey g.key --template h.cfg --outfile g.csr
certtool --generate-certificate --load-request g.csr --load-ca-privkey g.key --load-ca-certificate g.pem --template h.cfg \
    --outfile h.pem
certtool --generate-crl --load-ca-privkey g.key --load-ca-certificate g.pem --template gnu.cfg --outfile g.crl
"""
VERIFY_RESPONSE = "cryptotool ocsp verify --issuer t.pem --cert r.pem"

# A file, how it is judged, and what the judge says of it.
ROWS = [
    ("ec.pem", "openssl verify -x509_strict -CAfile root.pem -untrusted sub.pem -crl_check_all -CRLfile both.crl {}", "OK"),
    ("ec.pem", "cat {} issuers.pem >{}.chain; certtool --verify --load-ca-certificate root.pem --infile {}.chain", "Verified."),
    ("sub.pem", "mkdir {}.nss; certutil -N -d sql:{}.nss --empty-password; certutil -A -n root -t C,C,C -i root.pem -d sql:{}.nss; "
                "certutil -A -n sub -t ,, -i {} -d sql:{}.nss; certutil -V -n sub -u L -e -d sql:{}.nss", "certificate is valid"),
    ("ec.csr", "openssl req -verify -noout -in {}", "verify OK"),
    ("sub.crl", "openssl crl -noout -CAfile sub.pem -in {}", "verify OK"),
    ("sub.crl", "certtool --verify-crl --load-ca-certificate sub.pem --infile {}", "Verified."),
    *(("response", f"openssl ocsp -CAfile root.pem -issuer sub.pem -verify_other sub.pem {which} -no_nonce -respin {{}}", says)
      for which, says in (("-cert ec.pem", r"Response verify OK\nec.pem: good"),
                          ("-serial 0x1003", r"Response verify OK\n0x1003: revoked\n(.*\n)+\tReason: keyCompromise"))),
    ("response", "ocsptool --verify-response --load-issuer sub.pem --load-trust sub.pem --infile {}", "Success"),

    ("r.pem", "cryptotool cert verify --trust t.pem --crl t.crl --host x.example {}",
     r"VALID\n  0  CN=Their .* good \(CRL 7.*\n  1  CN=Their\\, root, C=FI "),
    ("r.csr", "cryptotool csr verify {} && cryptotool csr show {}", r"OK\n(.*\n)*.*DNS:x\.example"),
    ("t.crl", "cryptotool crl verify --issuer t.pem {}", "VALID  CRL 7 of"),
    ("t.request", "cryptotool ocsp respond --ca t.pem --key t.key --crl t.crl {} | " + VERIFY_RESPONSE + " --require-nonce --request "
                  "t.request -", "GOOD"),
    ("t.response", VERIFY_RESPONSE + " --request t.request --require-nonce {}", "GOOD"),
    ("our.request", VERIFY_RESPONSE + " --request {} --require-nonce t.answer", "GOOD"),
    ("t.cades", "cryptotool cms verify --cades --trust t.pem --content content {}", "VALID  CN=Their"),
    ("t.streamed", "cryptotool cms verify --trust t.pem {}", "VALID  CN=Their; SHA-512, RSA 2048"),
    ("t.pss", "cryptotool cms verify --trust t.pem {}", "VALID"),
    ("t.gnutls", "cryptotool cms verify --trust t.pem --content content {}", "VALID"),
    *((name, "cryptotool cms decrypt --recipient r.pem --key r.key {} | cmp - content", "") for name in ("t.pkcs1", "t.oaep")),
    *((name, "cryptotool p12 import --plain --password-file password {} | tee {}.pem; cryptotool key public {}.pem >{}.public; "
             "openssl pkey -in r.key -pubout | cmp - {}.public && grep -c 'BEGIN CERT' {}.pem | grep -x 2", "")
      for name in ("t.p12", "t.legacy.p12", "t.gnutls.p12", "t.nss.p12", "t.nss.legacy.p12")),
    ("t.nss.p12", "cryptotool p12 show --password-file password {}", "friendlyName        Theirs"),
    ("h.pem", "cryptotool cert verify --trust g.pem --crl g.crl {}", "VALID"),
    ("g.csr", "cryptotool csr verify {}", "OK"),
    ("g.crl", "cryptotool crl verify --issuer g.pem {}", "VALID  CRL 5 of CN=Gnu"),
]


def add_kinds():
    """Adds to the rows what is made once for each kind. Returns the commands that make it."""
    commands = []
    for number, (signer, options) in enumerate(CMS_KINDS):
        name = f"signed{number}"
        commands.append(f"cryptotool cms sign --signer {signer}.pem --key {signer}.key --certs sub.pem {options} content -o {name}")
        ROWS.extend((name, judge, "") for judge in (CMS_EMBEDDED_JUDGES if "--embed" in options else CMS_JUDGES))
    for number, options in enumerate(ENVELOPE_KINDS):
        name = f"enveloped{number}"
        commands.append(f"cryptotool cms encrypt --recipient rsa.pem {options} content -o {name}")
        ROWS.append((name, "openssl cms -decrypt -binary -inform DER -in {} -recip rsa.pem -inkey rsa.key | cmp - content", ""))
    for number, (options, judges) in enumerate(STORE_KINDS.items()):
        name = f"store{number}.p12"
        commands.append(f"cryptotool p12 export --key rsa.key --name Avain --iterations 2000 --new-password-file password {options} "
                        f"rsa.pem sub.pem -o {name}")
        ROWS.extend((name, STORE_JUDGES[judge], "") for judge in judges.split())
    return commands


def damaged(data):
    """The file with another byte: one of the digest that is signed, or the last one, in PEM of what the text stands for."""
    found = re.search(rb"(-----BEGIN [^\n]+\n)([^-]+)(-----END .*)", data, re.S)
    if found:
        return found[1] + base64.encodebytes(damaged(base64.b64decode(found[2]))) + found[3]
    ends = [data.find(digest) + len(digest) for digest in DIGESTS if digest in data]
    last = min(ends, default=len(data)) - 1
    return data[:last] + bytes([data[last] ^ 1]) + data[last + 1:]


def run(folder, command):
    path = f"{folder}:{os.environ['PATH']}"
    result = subprocess.run(["bash", "-o", "pipefail", "-c", command], cwd=folder, env={**os.environ, "PATH": path, "LC_ALL": "C"},
                            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    return result.returncode, result.stdout.decode("utf-8", "replace")


def shortened(output):
    return "".join(f"    {line[:200]}\n" for line in output.splitlines()[-15:])


def judge(folder, number, row):
    """What is wrong with a row; empty when nothing is."""
    name, command, says = row
    copies = []
    for kind, change in (("whole", bytes), ("damaged", damaged)):
        copies.append(f"{name}.{number}.{kind}")
        (folder / copies[-1]).write_bytes(change((folder / name).read_bytes()))
    code, output = run(folder, command.replace("{}", copies[0]))
    if code != 0 or not re.search(says.replace("ec.pem", copies[0]) if name == "ec.pem" else says, output):
        return f"{name} is not accepted by: {command}\n{shortened(output)}"
    code, output = run(folder, command.replace("{}", copies[1]))
    if (code == 0 and re.search(says, output)) or "Sanitizer" in output:
        return f"{name} with another last byte is accepted by: {command}\n{shortened(output)}"
    return ""


def make(folder, commands):
    code, output = run(folder, "set -ex\n" + commands)
    if code != 0:
        sys.exit(f"a file cannot be made:\n{shortened(output)}")


def main(tool):
    with tempfile.TemporaryDirectory() as name, concurrent.futures.ThreadPoolExecutor(4) as pool:
        folder = pathlib.Path(name)
        start = folder / "cryptotool"
        start.write_text(f'#!/bin/sh\nexec {" ".join(shlex.quote(os.path.abspath(word)) for word in tool)} "$@"\n')
        start.chmod(0o755)
        (folder / "content").write_bytes(CONTENT)
        (folder / "password").write_text("secret\n")
        make(folder, SETUP)
        list(pool.map(lambda commands: make(folder, commands), [THEIR_SETUP, *add_kinds()]))
        complaints = list(filter(None, pool.map(lambda item: judge(folder, *item), enumerate(ROWS))))
    print(*complaints, f"{len(ROWS) - len(complaints)} of {len(ROWS)} rows are as they should be", sep="\n")
    return 1 if complaints else 0


if __name__ == "__main__":
    if len(sys.argv) < 2 or sys.argv[1].startswith("-"):
        print(__doc__)
        sys.exit(0 if sys.argv[1:] in (["-h"], ["--help"]) else 2)
    sys.exit(main(sys.argv[1:]))
