/** The version, for those who have nothing but the file: strings(1) shows it as "syscmd 1.0.0". */
namespace {

[[gnu::used, gnu::retain]] constexpr char VERSION[] = "syscmd " SYSCMD_VERSION;

}
