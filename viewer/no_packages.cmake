message(FATAL_ERROR "The packages of the page could not be fetched. "
    "Configure with -DMQF2VXB_BUILD_VIEWER=OFF to build everything but \"vxbtool view\".")
