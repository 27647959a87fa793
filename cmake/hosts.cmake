# The hosts that KELDRA talks to, e.g. "https://keldra.example.org", and the key it does so with. Empty means that the
# feature is off: nothing is asked, nothing is sent. A deployment configures with -D KELDRA_HOSTS_FILE=<its own copy>.

# Where /apps/keldra/version.json lies, which tells the newest version.
set(KELDRA_UPDATE_HOST "")

# "A-<region>-<digits>"; the region chooses the host below that usage events go to.
set(KELDRA_ANALYTICS_KEY "")
set(KELDRA_ANALYTICS_HOST_US "")
set(KELDRA_ANALYTICS_HOST_EU "")
set(KELDRA_ANALYTICS_HOST_DEV "")
# Self-hosted.
set(KELDRA_ANALYTICS_HOST_SH "")
