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
     "Replaces the entry of that role and server. Does not open the files that it names. Without\n"
     "a password option the new entry has no password, and without --trusted no trusted\n"
     "certificate. Keeps the former content of the file beside it.\n\n"
     "Example:\n"
     "  vdcertificates set subsystems-server --server SRV01 --public-key /keys/srv01.pub \\\n"
     "      --private-key /keys/srv01.key --certificate /keys/srv01.crt \\\n"
     "      --trusted /keys/authority.crt --password-file /root/srv01.password\n",
     run_set},
    {"update", "Change some fields of an entry", "ROLE", true, update_options,
     "Leaves the other fields as they are. The exit status is 3 if there is no such entry.\n\n"
     "Example:\n"
     "  vdcertificates update cluster --certificate /keys/renewed.crt\n",
     run_update},
    {"remove", "Remove an entry, or all entries of a server", "ROLE", false, remove_options,
     "Give a ROLE, or --server and --all-roles. The exit status is 3 if there is nothing to\n"
     "remove.\n\n"
     "Example:\n"
     "  vdcertificates remove --server SRV01 --all-roles\n",
     run_remove},
    {"get", "Print an entry", "ROLE", true, get_options,
     "The fields are role, server, public_key, private_key, certificate, trusted and password\n"
     "(with --show-password). The exit status is 3 if there is no such entry.\n\n"
     "Example:\n"
     "  vdcertificates get subsystems-server --server SRV01 --field private_key\n",
     run_get},
    {"list", "Print all entries", "", false, list_options,
     "Prints a table on a terminal. Otherwise prints one line per entry, with its fields\n"
     "separated by tabs: role, server, public key, private key, certificate, trusted, and the\n"
     "password with --show-passwords.\n\n"
     "Example:\n"
     "  vdcertificates list | cut -f 1,2,5\n",
     run_list},
    {"where", "Print which file and which keys are used, and which rule chose them", "", false,
     where_options,
     "The environment variable ORVA_Certificates names the file. Otherwise the file is in the\n"
     "directory of the key files, which the machine's setting names. Without a setting that\n"
     "directory is in the user's profile.\n\n"
     "Example:\n"
     "  vdcertificates where\n",
     run_where},
    {"check", "Check everything and report what is wrong and how to repair it", "", false,
     check_options,
     "Each line begins with ok, note, warning or problem. The exit status is 1 if there is a\n"
     "problem, and 0 otherwise.\n\n"
     "Example:\n"
     "  vdcertificates check --files --days 14\n",
     run_check},
    {"restore", "Bring back what the file held before the last change", "", false, restore_options,
     "Exchanges the file and FILE.previous, so that a second restore undoes the first.\n\n"
     "Example:\n"
     "  vdcertificates restore\n",
     run_restore},
    {"export", "Write all entries with their passwords, enciphered", "", false, export_options,
     "Writes JSON in CMS enveloped data for a password recipient (RFC 5652; PBKDF2, AES-256).\n"
     "'openssl cms -decrypt -pwri_password' also opens it.\n\n"
     "Example:\n"
     "  vdcertificates export --password-file /root/export.password --output site.cms\n",
     run_export},
    {"import", "Store the entries of an exported file", "FILE", true, import_options,
     "Leaves entries that the file does not name as they are. A second run changes nothing. If a\n"
     "password is null or missing, the stored one is kept.\n\n"
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
