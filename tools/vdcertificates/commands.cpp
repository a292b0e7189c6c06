#include "tools/vdcertificates/commands.h"

namespace tool {
namespace {

using enum Option;

constexpr OptionUse set_options[] = {
    {server},      {public_key, true},   {private_key, true}, {certificate, true},
    {trusted},     {password_file},      {password_stdin},    {prompt},
    {no_password}, {discard_unreadable},
};
constexpr OptionUse update_options[] = {
    {server},        {public_key},     {private_key}, {certificate}, {trusted},
    {password_file}, {password_stdin}, {prompt},      {no_password}, {discard_unreadable},
};
constexpr OptionUse remove_options[] = {{server}, {all_roles}, {discard_unreadable}};
constexpr OptionUse get_options[] = {{server}, {field}, {format}, {show_password}};
constexpr OptionUse list_options[] = {{format}, {show_passwords}};
constexpr OptionUse where_options[] = {{format}};
constexpr OptionUse check_options[] = {{files}, {days}, {format}};
constexpr OptionUse restore_options[] = {{discard_unreadable}};
constexpr OptionUse export_options[] = {{output}, {password_file}, {password_stdin}, {prompt}};
constexpr OptionUse import_options[] = {{password_file}, {password_stdin}, {prompt},
                                        {plain},         {dry_run},        {discard_unreadable}};

constexpr Command all[] = {
    {"set", "Store an entry", "ROLE", true, set_options,
     "The entry replaces the former one of that role and server. The files that it names are\n"
     "not looked at. Without a password option the entry has no password, and a stored one is\n"
     "removed; the same goes for --trusted. The former content of the file is kept beside it.\n\n"
     "Example:\n"
     "  vdcertificates set subsystems-server --server SRV01 --public-key /keys/srv01.pub \\\n"
     "      --private-key /keys/srv01.key --certificate /keys/srv01.crt \\\n"
     "      --trusted /keys/authority.crt --password-file /root/srv01.password\n",
     run_set},
    {"update", "Change some fields of an entry", "ROLE", true, update_options,
     "Fields that are not given stay as they are. The exit status is 3 when there is no such\n"
     "entry.\n\n"
     "Example:\n"
     "  vdcertificates update cluster --certificate /keys/renewed.crt\n",
     run_update},
    {"remove", "Remove an entry, or all entries of a server", "ROLE", false, remove_options,
     "Give a ROLE, or --server and --all-roles. The exit status is 3 when there is nothing to\n"
     "remove.\n\n"
     "Example:\n"
     "  vdcertificates remove --server SRV01 --all-roles\n",
     run_remove},
    {"get", "Print an entry", "ROLE", true, get_options,
     "The fields are role, server, public_key, private_key, certificate, trusted and password\n"
     "(with --show-password). The exit status is 3 when there is no such entry.\n\n"
     "Example:\n"
     "  vdcertificates get subsystems-server --server SRV01 --field private_key\n",
     run_get},
    {"list", "Print all entries", "", false, list_options,
     "A terminal gets a table. A pipe gets one line for each entry, its fields between tabs:\n"
     "role, server, public key, private key, certificate, trusted, and with --show-passwords the\n"
     "password.\n\n"
     "Example:\n"
     "  vdcertificates list | cut -f 1,2,5\n",
     run_list},
    {"where", "Say which file and which keys are used, and which rule chose them", "", false,
     where_options,
     "The file is the one that the environment variable ORVA_Certificates names; else it is in\n"
     "the directory of the key files: the one that the machine's setting names, else one below\n"
     "the user's profile.\n\n"
     "Example:\n"
     "  vdcertificates where\n",
     run_where},
    {"check", "Read everything and say what is wrong and what to do", "", false, check_options,
     "Lines begin with ok, note, warning or problem. The exit status is 1 when there is a\n"
     "problem, else 0.\n\n"
     "Example:\n"
     "  vdcertificates check --files --days 14\n",
     run_check},
    {"restore", "Bring back what the file held before the last change", "", false, restore_options,
     "Exchanges the file and FILE.previous, so that a second restore undoes the first.\n\n"
     "Example:\n"
     "  vdcertificates restore\n",
     run_restore},
    {"export", "Write all entries with their passwords, enciphered", "", false, export_options,
     "The result is JSON in CMS enveloped data for a password recipient (RFC 5652; PBKDF2,\n"
     "AES-256), which 'openssl cms -decrypt -pwri_password' opens, too.\n\n"
     "Example:\n"
     "  vdcertificates export --password-file /root/export.password --output site.cms\n",
     run_export},
    {"import", "Store the entries of an exported file", "FILE", true, import_options,
     "Entries that the file does not name stay as they are. A second run changes nothing. A\n"
     "password that is null or missing leaves a stored one as it is.\n\n"
     "Example:\n"
     "  vdcertificates import site.cms --password-file /root/export.password --dry-run\n",
     run_import},
    {"completion",
     "Print a script that completes command lines",
     "SHELL",
     true,
     {},
     "SHELL is bash, zsh or fish.\n\n"
     "Example:\n"
     "  vdcertificates completion bash >/etc/bash_completion.d/vdcertificates\n",
     run_completion},
};

} // namespace

std::span<const Command> commands() {
    return all;
}

} // namespace tool
