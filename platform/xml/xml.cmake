# Sources of the XML message library, relative to platform/.
set(KP_XML_SOURCES)
