import { defineConfig } from "vite";
import { viteSingleFile } from "vite-plugin-singlefile";

export default defineConfig({
  plugins: [viteSingleFile({ removeViteModuleLoader: true })],
  build: { target: "es2020", chunkSizeWarningLimit: 2000 },
  logLevel: "warn",
});
