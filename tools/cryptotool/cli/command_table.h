#pragma once

namespace ccrypto {

struct Command;

extern const Command asn1BuildCommand;
extern const Command asn1GetCommand;
extern const Command asn1MatchCommand;
extern const Command asn1ShowCommand;
extern const Command certBuildCommand;
extern const Command certShowCommand;
extern const Command certVerifyCommand;
extern const Command cipherDecCommand;
extern const Command cipherEncCommand;
extern const Command cmsDecryptCommand;
extern const Command cmsEncryptCommand;
extern const Command cmsShowCommand;
extern const Command cmsSignCommand;
extern const Command cmsVerifyCommand;
extern const Command completionCommand;
extern const Command crlBuildCommand;
extern const Command crlFindCommand;
extern const Command crlShowCommand;
extern const Command crlVerifyCommand;
extern const Command csrBuildCommand;
extern const Command csrShowCommand;
extern const Command csrVerifyCommand;
extern const Command gunzipCommand;
extern const Command gzipCommand;
extern const Command hashCommand;
extern const Command keyAgreeCommand;
extern const Command keyConvertCommand;
extern const Command keyDecryptCommand;
extern const Command keyEncryptCommand;
extern const Command keyGenCommand;
extern const Command keyPublicCommand;
extern const Command keyShowCommand;
extern const Command keySignCommand;
extern const Command keyVerifyCommand;
extern const Command macCommand;
extern const Command manualCommand;
extern const Command ocspRequestCommand;
extern const Command ocspRespondCommand;
extern const Command ocspShowCommand;
extern const Command ocspVerifyCommand;
extern const Command oidCommand;
extern const Command p12ExportCommand;
extern const Command p12ImportCommand;
extern const Command p12ShowCommand;
extern const Command randomCommand;
extern const Command speedCommand;

} // namespace ccrypto
